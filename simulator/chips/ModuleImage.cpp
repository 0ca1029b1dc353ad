#include "simulator/chips/ModuleImage.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>

namespace Simulator {

namespace {

// Texts are padded with spaces on the right.
void put( EepromImage &image, size_t at, size_t length, const std::string &text ) {
   if ( text.size() > length )
      throw std::length_error( "longer than its field: " + text );
   std::fill_n( image.begin() + static_cast<long>( at ), length, ' ' );
   std::copy( text.begin(), text.end(), image.begin() + static_cast<long>( at ) );
}

void putWord( EepromImage &image, size_t at, unsigned word ) {
   image[at] = static_cast<uint8_t>( word >> 8 );
   image[at + 1] = static_cast<uint8_t>( word );
}

uint8_t sum( const EepromImage &image, size_t first, size_t last ) {
   return static_cast<uint8_t>( std::accumulate( image.begin() + static_cast<long>( first ),
                                                 image.begin() + static_cast<long>( last ) + 1,
                                                 0u ) );
}

constexpr uint8_t bitRate = 103;     // in 100 MBd, of one lane
constexpr unsigned wavelength = 850; // nm

} // namespace

EepromImage sfpImage( const ModuleIdentity &identity ) {
   EepromImage image{};
   image[0] = 0x03;  // SFP
   image[1] = 0x04;  // defined by its serial id
   image[2] = 0x07;  // LC connector
   image[3] = 0x10;  // 10GBASE-SR
   image[11] = 0x06; // 64B/66B
   image[12] = bitRate;
   // SFF-8472, "Link length": byte 18 would be OM4 fibre, or copper for a module of copper.
   image[16] = 8;  // 82 m of OM2 fibre, in 10 m
   image[19] = 30; // 300 m of OM3
   put( image, 20, 16, identity.vendor );
   put( image, 40, 16, identity.partNumber );
   put( image, 56, 4, identity.revision );
   putWord( image, 60, wavelength );
   image[63] = sum( image, 0, 62 );
   image[65] = 0x1A; // signals: TX disable, TX fault, loss of signal
   put( image, 68, 16, identity.serial );
   put( image, 84, 8, identity.date );
   image[95] = sum( image, 64, 94 );
   return image;
}

EepromImage qsfpImage( const ModuleIdentity &identity ) {
   EepromImage image{};
   image[0] = 0x0D;                      // QSFP+
   image[1] = 0x07;                      // SFF-8636 revision 2.5 to 2.7
   image[2] = 0x06;                      // flat memory, interrupt not asserted, data ready
   putWord( image, 22, 31 << 8 | 0x80 ); // 31.5 degrees Celsius
   putWord( image, 26, 33000 );          // 3.3 V, in 100 microvolts
   image[128] = 0x0D;
   image[130] = 0x0C; // MPO connector
   image[131] = 0x04; // 40GBASE-SR4
   image[139] = 0x05; // 64B/66B
   image[140] = bitRate;
   image[143] = 50; // 100 m of OM3 fibre, in 2 m
   put( image, 148, 16, identity.vendor );
   put( image, 168, 16, identity.partNumber );
   put( image, 184, 2, identity.revision );
   putWord( image, 186, wavelength * 20 ); // in 0.05 nm
   image[190] = 70;                        // degrees Celsius, the maximum for the case
   image[191] = sum( image, 128, 190 );
   put( image, 196, 16, identity.serial );
   put( image, 212, 8, identity.date );
   image[223] = sum( image, 192, 222 );
   return image;
}

namespace {

ChipKind moduleKind( std::string name, std::string description, unsigned revisionBytes,
                     EepromImage ( *image )( const ModuleIdentity & ) ) {
   return { .name = std::move( name ),
            .description = std::move( description ),
            .settings = { text( "vendor", "Who made it.", 16 ),
                          text( "partNumber", "Its part number.", 16 ),
                          text( "revision", "Of the part.", revisionBytes ),
                          text( "serial", "Serial number.", 16 ), text( "date", "YYMMDD.", 8 ) },
            .make = [image]( const ChipEntry &entry ) -> std::unique_ptr<Chip> {
               return std::make_unique<Eeprom24C02>(
                  entry.name(), image( { entry.text( "vendor" ), entry.text( "partNumber" ),
                                         entry.text( "revision" ), entry.text( "serial" ),
                                         entry.text( "date" ) } ) );
            } };
}

} // namespace

ChipKind sfpModuleKind() {
   return moduleKind( "SfpModule", "The serial id of an SFP.", 4, sfpImage );
}

ChipKind qsfpModuleKind() {
   return moduleKind( "QsfpModule", "The memory of a QSFP.", 2, qsfpImage );
}

} // namespace Simulator
