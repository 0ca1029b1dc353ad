#include "simulator/chips/FruImage.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>

namespace Simulator {

namespace {

constexpr uint8_t formatVersion = 1;
constexpr uint8_t english = 25;
constexpr uint8_t eightBitAscii = 0xC0; // type, in the upper two bits of a field's first byte
constexpr uint8_t noMoreFields = 0xC1;
constexpr size_t headerBytes = 8;
constexpr size_t lengthUnit = 8; // lengths and offsets count these

// The byte that makes the sum zero.
uint8_t checksum( const std::string &bytes ) {
   const auto add = []( unsigned sum, char byte ) { return sum + static_cast<uint8_t>( byte ); };
   return static_cast<uint8_t>( -std::accumulate( bytes.begin(), bytes.end(), 0u, add ) );
}

std::string field( std::string text ) {
   constexpr size_t most = 63;
   if ( text.size() == 1 )
      text += ' ';
   if ( text.size() > most )
      throw std::length_error( "more than 63 characters: " + text );
   return static_cast<char>( eightBitAscii | text.size() ) + text;
}

std::string productArea( const FruProduct &product ) {
   std::string area{ formatVersion, 0, english };
   const std::string noFileId;
   for ( const std::string *text :
         { &product.manufacturer, &product.name, &product.partNumber, &product.version,
           &product.serial, &product.assetTag, &noFileId } )
      area += field( *text );
   area += static_cast<char>( noMoreFields );
   const size_t units = ( area.size() + 1 + lengthUnit - 1 ) / lengthUnit;
   area[1] = static_cast<char>( units );
   area.resize( units * lengthUnit - 1 );
   return area + static_cast<char>( checksum( area ) );
}

} // namespace

EepromImage fruImage( const FruProduct &product ) {
   std::string bytes{ formatVersion, 0, 0, 0, headerBytes / lengthUnit, 0, 0 };
   bytes += static_cast<char>( checksum( bytes ) );
   bytes += productArea( product );
   EepromImage image;
   if ( bytes.size() > image.size() )
      throw std::length_error( "the fields do not fit into the memory" );
   image.fill( 0xFF );
   std::copy( bytes.begin(), bytes.end(), image.begin() );
   return image;
}

ChipKind fru24C02Kind() {
   constexpr unsigned longest = 63; // six bits of length
   return { .name = "Fru24C02",
            .description = "A memory with FRU information.",
            .settings = { text( "manufacturer", "Who made it.", longest ),
                          text( "product", "The product's name.", longest ),
                          text( "partNumber", "Part or model number.", longest ),
                          text( "version", "The product's version.", longest ),
                          text( "serial", "Serial number.", longest ),
                          text( "assetTag", "Asset tag.", longest ) },
            .make = []( const ChipEntry &entry ) -> std::unique_ptr<Chip> {
               const FruProduct product{ entry.text( "manufacturer" ), entry.text( "product" ),
                                         entry.text( "partNumber" ),   entry.text( "version" ),
                                         entry.text( "serial" ),       entry.text( "assetTag" ) };
               return std::make_unique<Eeprom24C02>( entry.name(), fruImage( product ) );
            } };
}

} // namespace Simulator
