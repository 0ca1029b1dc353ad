#include "boardfiles/WritePolicy.h"

#include "boardfiles/RootBusText.h"
#include "boardfiles/Schema.h"

#include <fmt/format.h>

#include <optional>
#include <sstream>

namespace BoardFiles {

namespace {

constexpr uint32_t greatestSelect = 0xFF;

// "0x70=1 0x71=4" in the form that places have everywhere. Nothing for another text.
std::optional<std::string> pathIn( std::string_view text ) {
   std::istringstream words{ std::string( text ) };
   std::string path;
   for ( std::string word; words >> word; ) {
      const size_t equals = word.find( '=' );
      if ( equals == word.npos )
         return {};
      const auto address = Bus::parseNumber( word.substr( 0, equals ), Bus::maxId );
      const auto select = Bus::parseNumber( word.substr( equals + 1 ), greatestSelect );
      if ( !address || !select )
         return {};
      path += fmt::format( "{}{:#04x}={}", path.empty() ? "" : " ", *address, *select );
   }
   return path;
}

WriteRow rowIn( const Json &json, Findings &findings ) {
   WriteRow row{ .user = json.textOf( "user" ).value_or( "" ),
                 .group = json.textOf( "group" ).value_or( "" ),
                 .bus = rootBusIn( *json.find( "bus" ), findings ).value_or( Bus::RootBusId() ),
                 .address = static_cast<uint8_t>( *json.unsignedOf( "address" ) ),
                 .reason = *json.textOf( "reason" ),
                 .place = json.place() };
   if ( const Json *via = json.find( "via" ) ) {
      const auto path = pathIn( *via->toText() );
      if ( !path )
         report( findings, via->place(),
                 fmt::format( "\"{}\" does not name multiplexers; write them as \"0x70=1\", or as "
                              "\"0x70=1 0x71=4\" with the outermost first",
                              *via->toText() ) );
      row.path = path.value_or( "" );
   }
   for ( const Json &entry : json.elementsOf( "registers" ) ) {
      const uint32_t first = *entry.unsignedOf( "first" );
      row.registers.push_back( { first, entry.unsignedOf( "last" ).value_or( first ),
                                 entry.unsignedOf( "bytes" ).value_or( 1 ) } );
      if ( row.registers.back().last < first )
         report( findings, entry.place(),
                 fmt::format( "the last register, {}, is before the first, {}",
                              row.registers.back().last, first ) );
   }
   return row;
}

} // namespace

std::string toText( const WriteRow &row ) {
   std::string registers;
   for ( const auto &[first, last, bytes] : row.registers )
      registers += fmt::format( ", {:#04x}{}: {} byte{}", first,
                                last > first ? fmt::format( " to {:#04x}", last ) : "", bytes,
                                bytes == 1 ? "" : "s" );
   return fmt::format( "{} {}: {:#04x}{}{} on {}{}: {}", row.group.empty() ? "user" : "group",
                       row.group.empty() ? row.user : row.group, row.address,
                       row.path.empty() ? "" : " behind ", row.path, toString( row.bus ), registers,
                       row.reason );
}

WritePolicy loadWritePolicy( const std::filesystem::path &path ) {
   static const Schema schema( writesSchema );
   Findings findings;
   WritePolicy policy{ .file = path.string() };
   if ( const auto json = readJson( path, findings ) ) {
      schema.check( *json, findings );
      throwErrors( findings );
      for ( const Json &entry : json->elementsOf( "writes" ) )
         policy.rows.push_back( rowIn( entry, findings ) );
   }
   throwErrors( findings );
   return policy;
}

} // namespace BoardFiles
