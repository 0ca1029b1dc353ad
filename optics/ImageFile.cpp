#include "optics/ImageFile.h"

#include "optics/Decode.h"

#include <algorithm>
#include <fmt/format.h>
#include <stdexcept>

namespace Optics {

namespace {

constexpr size_t halfSize = 128;

std::vector<Region> layoutOf( Standard standard ) {
   switch ( standard ) {
   case Standard::Sff8472:
      return { { 0x50 }, { 0x50, true }, { 0x51 }, { 0x51, true } };
   case Standard::Sff8636:
      return { { 0x50 },
               { 0x50, true, 0, 0x00 },
               { 0x50, true, 0, 0x01 },
               { 0x50, true, 0, 0x02 },
               { 0x50, true, 0, 0x03 } };
   case Standard::Cmis:
      return { { 0x50 },
               { 0x50, true, 0, 0x00 },
               { 0x50, true, 0, 0x01 },
               { 0x50, true, 0, 0x02 },
               { 0x50, true, 0, 0x10 },
               { 0x50, true, 0, 0x11 } };
   }
   return {};
}

Standard standardOfFile( std::span<const uint8_t> file ) {
   if ( file.empty() )
      throw std::runtime_error( "the file is empty: read the module's memory into it again" );
   Image image;
   image.put( { 0x50 }, 0, file.first( 1 ) );
   if ( const auto standard = standardOf( image ) )
      return *standard;
   throw std::runtime_error(
      fmt::format( "byte 0 is {:02X}h, which is no module of SFF-8472, SFF-8636 or CMIS: name the "
                   "standard if it is one of these all the same",
                   file[0] ) );
}

} // namespace

Image imageOfFile( std::span<const uint8_t> file, std::optional<Standard> standard ) {
   const Standard known = standard ? *standard : standardOfFile( file );
   const std::vector<Region> layout = layoutOf( known );
   const size_t most = layout.size() * halfSize;
   if ( file.size() > most )
      throw std::runtime_error( fmt::format(
         "the file has {} bytes, and the memory of a module of {} has at most {} here: it is no "
         "such file, or holds other pages",
         file.size(), nameOf( known ), most ) );
   Image image;
   for ( const Region &region : layout ) {
      const auto half = file.first( std::min( file.size(), halfSize ) );
      if ( half.empty() )
         break;
      image.put( region, region.upper ? 128 : 0, half );
      file = file.subspan( half.size() );
   }
   return image;
}

std::vector<uint8_t> fileOfImage( const Image &image, Standard standard ) {
   std::vector<uint8_t> file;
   size_t size = 0;
   for ( const Region &region : layoutOf( standard ) ) {
      const auto found = image.regions().find( region );
      for ( size_t i = 0; i < halfSize; ++i ) {
         const auto byte = found == image.regions().end() ? std::nullopt : found->second[i];
         file.push_back( byte.value_or( 0 ) );
      }
      if ( found != image.regions().end() )
         size = file.size();
   }
   file.resize( size );
   return file;
}

} // namespace Optics
