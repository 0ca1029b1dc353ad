#include "RandomModules.h"

#include <bit>
#include <random>

namespace OpticsTest {

using namespace Optics;

namespace {

class Dice {
 public:
   explicit Dice( uint64_t seed ) : engine_( seed ) {}
   unsigned below( unsigned end ) { return static_cast<unsigned>( engine_() % end ); }
   uint8_t byte() { return static_cast<uint8_t>( below( 256 ) ); }
   // In `one` of `of` cases.
   bool is( unsigned one, unsigned of ) { return below( of ) < one; }

 private:
   std::mt19937_64 engine_;
};

void scatter( Bytes &file, size_t first, size_t size, Dice &dice ) {
   for ( size_t i = first; i < first + size; ++i )
      file[i] = dice.byte();
}

// Of letters below the backslash, with which we escape.
void scatterText( Bytes &file, size_t first, size_t size, Dice &dice ) {
   const size_t used = dice.below( static_cast<unsigned>( size ) + 1 );
   const uint8_t padding = dice.is( 1, 8 ) ? 0 : ' ';
   for ( size_t i = 0; i < size; ++i )
      file[first + i] = i >= used          ? padding
                        : dice.is( 1, 40 ) ? dice.byte()
                                           : static_cast<uint8_t>( 0x21 + dice.below( 0x3B ) );
}

// Words of monitors; now and then no light, and the greatest one.
void scatterWords( Bytes &file, size_t first, size_t size, Dice &dice ) {
   scatter( file, first, size, dice );
   for ( size_t i = first; i + 1 < first + size; i += 2 )
      if ( dice.is( 1, 12 ) )
         file[i] = file[i + 1] = dice.is( 1, 2 ) ? 0x00 : 0xFF;
}

void putWord( Bytes &file, size_t place, unsigned word ) {
   put( file, place, { uint8_t( word >> 8 ), uint8_t( word ) } );
}

void putReal( Bytes &file, size_t place, float number ) {
   const auto word = std::bit_cast<uint32_t>( number );
   putWord( file, place, word >> 16 );
   putWord( file, place + 2, word & 0xFFFF );
}

void putCalibration( Bytes &file, Dice &dice ) {
   putReal( file, a2 + 56, 0 );
   putReal( file, a2 + 60, 0 );
   putReal( file, a2 + 64, static_cast<float>( dice.below( 5 ) ) * 1e-6F );
   putReal( file, a2 + 68, 0.2F + static_cast<float>( dice.below( 100 ) ) / 100 );
   putReal( file, a2 + 72, static_cast<float>( dice.below( 41 ) ) - 20 );
   for ( size_t place = a2 + 76; place < a2 + 92; place += 4 ) {
      putWord( file, place, 0x60 + dice.below( 0x100 ) );
      putWord( file, place + 2, dice.below( 600 ) - 300 );
   }
}

Bytes randomSfp( uint64_t number, Dice &dice ) {
   static constexpr unsigned types[] = { 0x68, 0x58, 0x60, 0x50, 0x48, 0x78, 0x28, 0x6C };
   const auto code = static_cast<uint8_t>( number );
   Bytes file = sfp();
   put( file, 2, { code } );
   scatter( file, 3, 8, dice );
   if ( dice.is( 1, 2 ) )
      file[8] &= 0xF3; // no cable
   put( file, 11, { code, dice.is( 1, 8 ) ? uint8_t( 0xFF ) : dice.byte(), code } );
   scatter( file, 14, 6, dice );
   file[14 + dice.below( 6 )] = dice.is( 1, 2 ) ? 0 : 255;
   scatterText( file, 20, 16, dice );
   put( file, 36, { code } );
   scatter( file, 37, 3, dice );
   scatterText( file, 40, 16, dice );
   scatterText( file, 56, 4, dice );
   put( file, 60, { dice.is( 1, 2 ) ? uint8_t( dice.below( 16 ) ) : dice.byte() } );
   scatter( file, 61, 1, dice );
   scatter( file, 64, 4, dice );
   scatterText( file, 68, 16, dice );
   scatterText( file, 84, 8, dice );
   put( file, 92, { uint8_t( types[dice.below( 8 )] ), dice.byte() } );
   scatterWords( file, a2, 40, dice );
   if ( dice.is( 9, 10 ) )
      putCalibration( file, dice );
   else
      scatter( file, a2 + 56, 36, dice );
   scatterWords( file, a2 + 96, 10, dice );
   scatter( file, a2 + 110, 10, dice );
   if ( dice.is( 7, 8 ) )
      file[a2 + 110] &= 0xFE;
   return file;
}

Bytes randomQsfp( uint64_t number, Dice &dice ) {
   static constexpr uint8_t identifiers[] = { 0x0C, 0x0D, 0x11 };
   const auto code = static_cast<uint8_t>( number );
   Bytes file = qsfp();
   file[0] = file[128] = identifiers[dice.below( 3 )];
   file[1] = static_cast<uint8_t>( number % 11 );
   file[2] = dice.is( 3, 4 ) ? uint8_t( 0x02 * dice.below( 2 ) ) : dice.byte();
   scatter( file, 3, 12, dice );
   scatterWords( file, 22, 2, dice );
   scatterWords( file, 26, 2, dice );
   scatterWords( file, 34, 24, dice );
   put( file, 93, { dice.byte() } );
   file[113] = dice.is( 1, 5 ) ? dice.byte() : uint8_t( 0 );
   put( file, 129, { dice.byte(), code } );
   scatter( file, 131, 8, dice );
   put( file, 139, { code, dice.is( 1, 8 ) ? uint8_t( 0xFF ) : dice.byte() } );
   scatter( file, 141, 7, dice );
   scatterText( file, 148, 16, dice );
   scatter( file, 165, 3, dice );
   scatterText( file, 168, 16, dice );
   scatterText( file, 184, 2, dice );
   scatter( file, 186, 5, dice );
   put( file, 192, { code } );
   scatter( file, 193, 3, dice );
   scatterText( file, 196, 16, dice );
   scatterText( file, 212, 8, dice );
   scatter( file, 220, 3, dice );
   scatterWords( file, page03OfQsfp + 128, 72, dice );
   return file;
}

Bytes randomCmis( uint64_t number, Dice &dice ) {
   const auto code = static_cast<uint8_t>( number );
   Bytes file = qsfpDd();
   file[0] = file[128] = dice.is( 1, 2 ) ? 0x18 : 0x19;
   file[1] = dice.byte();
   file[3] = dice.byte();
   put( file, 9, { dice.byte() } );
   scatterWords( file, 14, 4, dice );
   put( file, 26, { dice.byte() } );
   put( file, 41, { uint8_t( number % 9 ) } );
   scatterText( file, 129, 16, dice );
   scatter( file, 145, 3, dice );
   scatterText( file, 148, 16, dice );
   scatterText( file, 164, 2, dice );
   scatterText( file, 166, 16, dice );
   scatterText( file, 182, 8, dice );
   scatterText( file, 190, 10, dice );
   put( file, 200, { dice.byte(), dice.byte(), dice.byte(), code } );
   scatter( file, 204, 4, dice );
   put( file, 212, { uint8_t( number % 20 ) } );
   scatter( file, page01OfCmis + 132, 10, dice );
   scatter( file, page01OfCmis + 151, 1, dice );
   scatter( file, page01OfCmis + 159, 4, dice );
   if ( dice.is( 1, 2 ) )
      put( file, page01OfCmis + 159, { 0x03, uint8_t( 0x07 | dice.below( 3 ) << 3 ) } );
   file[210] = dice.is( 1, 2 ) ? uint8_t( 0 ) : dice.byte();
   scatterWords( file, page02OfCmis + 128, 72, dice );
   scatter( file, page11OfCmis + 128, 26, dice );
   scatterWords( file, page11OfCmis + 154, 48, dice );
   return file;
}

} // namespace

Bytes randomModule( Standard standard, uint64_t number ) {
   Dice dice( number );
   Bytes file;
   switch ( standard ) {
   case Standard::Sff8472:
      file = randomSfp( number, dice );
      break;
   case Standard::Sff8636:
      file = randomQsfp( number, dice );
      break;
   case Standard::Cmis:
      file = randomCmis( number, dice );
      break;
   }
   sign( file, standard );
   return file;
}

} // namespace OpticsTest
