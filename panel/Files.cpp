#include "panel/Files.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <fmt/format.h>
#include <span>
#include <utility>

namespace Panel {

// orbis_embed() defines it.
extern const std::span<const std::pair<std::string_view, std::string_view>> embeddedFiles;

namespace {

std::string_view contentTypeOf( std::string_view name ) {
   using Type = std::pair<std::string_view, std::string_view>;
   static constexpr std::array types{ Type( ".html", "text/html; charset=utf-8" ),
                                      Type( ".css", "text/css; charset=utf-8" ),
                                      Type( ".js", "text/javascript; charset=utf-8" ),
                                      Type( ".svg", "image/svg+xml" ) };
   return std::ranges::find_if(
             types, [name]( const Type &type ) { return name.ends_with( type.first ); } )
      ->second; // the build takes no others
}

// FNV-1a, of 64 bits.
uint64_t hashOf( std::string_view text ) {
   uint64_t hash = 0xCBF29CE484222325;
   for ( const char c : text )
      hash = ( hash ^ static_cast<uint8_t>( c ) ) * 0x100000001B3;
   return hash;
}

std::vector<File> readAll() {
   std::vector<File> all;
   for ( const auto &[name, text] : embeddedFiles )
      all.push_back(
         { name, text, contentTypeOf( name ), fmt::format( "\"{:016x}\"", hashOf( text ) ) } );
   return all;
}

} // namespace

const std::vector<File> &files() {
   static const std::vector<File> all = readAll();
   return all;
}

const File *find( std::string_view name ) {
   const auto found = std::ranges::find( files(), name, &File::name );
   return found == files().end() ? nullptr : &*found;
}

} // namespace Panel
