// The 24C02 and its contents.
#include "BusPins.h"
#include "simulator/chips/FruImage.h"

#include <gtest/gtest.h>

#include <numeric>

namespace SimulatorTest {

namespace {

using namespace Simulator;

unsigned sum( const EepromImage &image, size_t first, size_t last ) {
   return std::accumulate( image.begin() + static_cast<long>( first ),
                           image.begin() + static_cast<long>( last ) + 1, 0u ) &
          0xFF;
}

TEST( Eeprom24C02Test, IncrementsTheAddressAndWrapsAround ) {
   EepromImage image{};
   image[0xFF] = 0x11;
   image[0x00] = 0x22;
   image[0x01] = 0x33;
   Eeprom24C02 chip( "rom", image );
   EXPECT_EQ( readFrom( chip, 0xFF, 2 ), ( Bytes{ 0x11, 0x22 } ) );
   chip.addressed( Direction::Read ); // continues after the last read
   EXPECT_EQ( chip.read(), 0x33 );
}

TEST( Eeprom24C02Test, AcknowledgesWritesAndKeepsNothing ) {
   EepromImage image{};
   image[5] = 0x55;
   Eeprom24C02 chip( "rom", image );
   EXPECT_EQ( writeTo( chip, 5, { 0x66 } ), 2 );
   EXPECT_EQ( readFrom( chip, 5, 1 ), Bytes{ 0x55 } );
}

TEST( FruImageTest, HoldsTheHeaderAndTheProductAreaByteByByte ) {
   const EepromImage image = fruImage( { "AB", "CDE", "F", "12", "345", "" } );
   const uint8_t due[] = { 0x01, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0xFE, 0x01, 0x03, 0x19,
                           0xC2, 'A',  'B',  0xC3, 'C',  'D',  'E',  0xC2, 'F',  ' ',  0xC2,
                           '1',  '2',  0xC3, '3',  '4',  '5',  0xC0, 0xC0, 0xC1 };
   EXPECT_TRUE( std::equal( std::begin( due ), std::end( due ), image.begin() ) );
   EXPECT_EQ( sum( image, 8, 31 ), 0u );
   EXPECT_EQ( image[32], 0xFF );
   EXPECT_EQ( image[255], 0xFF );
}

TEST( FruImageTest, KeepsEveryAreaInWholeUnitsOfEightBytes ) {
   for ( size_t length = 2; length < 20; ++length ) {
      const EepromImage image = fruImage( { std::string( length, 'x' ), "n", "p", "v", "s", "a" } );
      EXPECT_EQ( sum( image, 8, 8 + 8u * image[9] - 1 ), 0u ) << length;
   }
}

TEST( FruImageTest, RefusesTooLongTexts ) {
   EXPECT_NO_THROW( fruImage( { std::string( 63, 'x' ), "", "", "", "", "" } ) );
   EXPECT_THROW( fruImage( { std::string( 64, 'x' ), "", "", "", "", "" } ), std::length_error );
   const std::string most( 63, 'x' );
   EXPECT_THROW( fruImage( { most, most, most, most, "", "" } ), std::length_error );
}

} // namespace

} // namespace SimulatorTest
