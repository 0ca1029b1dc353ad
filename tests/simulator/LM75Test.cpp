#include "simulator/chips/LM75.h"
#include "ManualClock.h"

#include <gtest/gtest.h>

#include <vector>

namespace SimulatorTest {

namespace {

using namespace TestSupport;
using namespace Bus;
using namespace Simulator;
using namespace std::chrono_literals;
using Bytes = std::vector<int>;

class LM75Test : public ::testing::Test {
 protected:
   Bytes read( unsigned count ) {
      EXPECT_TRUE( chip.addressed( Direction::Read ) );
      Bytes bytes;
      while ( count-- > 0 )
         bytes.push_back( chip.read() );
      chip.stopped();
      return bytes;
   }
   Bytes readFrom( uint32_t pointer, unsigned count ) {
      writeTo( pointer, {} );
      return read( count );
   }
   void writeTo( uint32_t pointer, const Bytes &bytes ) {
      EXPECT_TRUE( chip.addressed( Direction::Write ) );
      EXPECT_TRUE( chip.command( pointer ) );
      for ( const int byte : bytes )
         EXPECT_TRUE( chip.write( static_cast<uint8_t>( byte ) ) );
      chip.stopped();
   }

   ManualClock clock;
   LM75 chip{ "u1", clock };
};

TEST_F( LM75Test, ShowsTheDatasheetsTemperatures ) {
   const struct {
      double celsius;
      Bytes bytes;
   } rows[] = {
      { 125, { 0x7D, 0x00 } }, { 25, { 0x19, 0x00 } },   { 0.5, { 0x00, 0x80 } },
      { 0, { 0x00, 0x00 } },   { -0.5, { 0xFF, 0x80 } }, { -25, { 0xE7, 0x00 } },
      { -55, { 0xC9, 0x00 } },
   };
   for ( const auto &row : rows ) {
      chip.temperatureIs( row.celsius );
      EXPECT_EQ( readFrom( 0, 2 ), row.bytes ) << row.celsius;
   }
}

TEST_F( LM75Test, ShowsHalfDegreesOnBothSidesOfZero ) {
   chip.temperatureIs( 24.5 );
   EXPECT_EQ( readFrom( 0, 2 ), ( Bytes{ 0x18, 0x80 } ) );
   chip.temperatureIs( -3.5 );
   EXPECT_EQ( readFrom( 0, 2 ), ( Bytes{ 0xFC, 0x80 } ) );
   chip.temperatureIs( -1 );
   EXPECT_EQ( readFrom( 0, 2 ), ( Bytes{ 0xFF, 0x00 } ) );
}

TEST_F( LM75Test, RoundsToTheNearestHalfDegree ) {
   chip.temperatureIs( 20.2 );
   EXPECT_EQ( readFrom( 0, 2 ), ( Bytes{ 0x14, 0x00 } ) );
   chip.temperatureIs( 20.3 );
   EXPECT_EQ( readFrom( 0, 2 ), ( Bytes{ 0x14, 0x80 } ) );
}

TEST_F( LM75Test, ClampsToNineBits ) {
   chip.temperatureIs( 200 );
   EXPECT_EQ( readFrom( 0, 2 ), ( Bytes{ 0x7F, 0x80 } ) );
   chip.temperatureIs( -200 );
   EXPECT_EQ( readFrom( 0, 2 ), ( Bytes{ 0x80, 0x00 } ) );
}

TEST_F( LM75Test, PowersUpWithTheDatasheetsValuesAndPointerAtTheTemperature ) {
   chip.temperatureIs( 31 );
   EXPECT_EQ( read( 2 ), ( Bytes{ 0x1F, 0x00 } ) );
   EXPECT_EQ( readFrom( 1, 1 ), Bytes{ 0x00 } );
   EXPECT_EQ( readFrom( 2, 2 ), ( Bytes{ 0x4B, 0x00 } ) );
   EXPECT_EQ( readFrom( 3, 2 ), ( Bytes{ 0x50, 0x00 } ) );
}

TEST_F( LM75Test, ReturnsTheDegreesToAReadOfOneByte ) {
   chip.temperatureIs( -3.5 );
   EXPECT_EQ( readFrom( 0, 1 ), Bytes{ 0xFC } );
}

TEST_F( LM75Test, KeepsItsPointerUntilTheNextOne ) {
   EXPECT_EQ( readFrom( 3, 2 ), ( Bytes{ 0x50, 0x00 } ) );
   EXPECT_EQ( read( 2 ), ( Bytes{ 0x50, 0x00 } ) );
}

TEST_F( LM75Test, RepeatsTheWordInALongRead ) {
   chip.temperatureIs( 24.5 );
   EXPECT_EQ( readFrom( 0, 5 ), ( Bytes{ 0x18, 0x80, 0x18, 0x80, 0x18 } ) );
   EXPECT_EQ( readFrom( 1, 3 ), ( Bytes{ 0x00, 0x00, 0x00 } ) );
}

TEST_F( LM75Test, StoresNineBitsOfBothThresholds ) {
   writeTo( 3, { 0x19, 0xFF } );
   writeTo( 2, { 0xE7, 0x80 } );
   EXPECT_EQ( readFrom( 3, 2 ), ( Bytes{ 0x19, 0x80 } ) );
   EXPECT_EQ( chip.tOs(), 25.5 );
   EXPECT_EQ( readFrom( 2, 2 ), ( Bytes{ 0xE7, 0x80 } ) );
   EXPECT_EQ( chip.tHyst(), -24.5 );
}

TEST_F( LM75Test, IgnoresAThresholdOfOneByte ) {
   writeTo( 3, { 0x19 } );
   EXPECT_EQ( chip.tOs(), 80 );
}

TEST_F( LM75Test, AcknowledgesAndIgnoresFurtherBytes ) {
   writeTo( 3, { 0x19, 0x00, 0x55 } );
   EXPECT_EQ( chip.tOs(), 25 );
   writeTo( 1, { 0x06, 0x55 } );
   EXPECT_EQ( readFrom( 1, 1 ), Bytes{ 0x06 } );
}

TEST_F( LM75Test, IgnoresWritesToTheTemperature ) {
   chip.temperatureIs( 24.5 );
   writeTo( 0, { 0x55, 0x80 } );
   EXPECT_EQ( readFrom( 0, 2 ), ( Bytes{ 0x18, 0x80 } ) );
}

TEST_F( LM75Test, KeepsTheReservedConfigurationBitsZero ) {
   writeTo( 1, { 0xFE } );
   EXPECT_EQ( readFrom( 1, 1 ), Bytes{ 0x1E } );
}

TEST_F( LM75Test, ShowsTheLastTemperatureWhileItIsShutDown ) {
   chip.temperatureIs( 24.5 );
   writeTo( 1, { 0x01 } );
   chip.temperatureIs( 31 );
   EXPECT_EQ( readFrom( 0, 2 ), ( Bytes{ 0x18, 0x80 } ) );
   writeTo( 1, { 0x00 } );
   EXPECT_EQ( readFrom( 0, 2 ), ( Bytes{ 0x1F, 0x00 } ) );
}

TEST_F( LM75Test, RepeatsItsRegistersEveryEightCommands ) {
   EXPECT_EQ( readFrom( 0x0B, 2 ), ( Bytes{ 0x50, 0x00 } ) );
   EXPECT_EQ( readFrom( 0x4A, 2 ), ( Bytes{ 0x4B, 0x00 } ) );
}

TEST_F( LM75Test, RepeatsTheLastByteWhereItHasNoRegister ) {
   EXPECT_EQ( readFrom( 3, 1 ), Bytes{ 0x50 } );
   for ( const uint32_t pointer : { 4u, 5u, 6u, 7u } )
      EXPECT_EQ( readFrom( pointer, 2 ), ( Bytes{ 0x50, 0x50 } ) ) << pointer;
   writeTo( 7, { 0x12, 0x34 } );
   EXPECT_EQ( readFrom( 3, 2 ), ( Bytes{ 0x50, 0x00 } ) );
}

TEST_F( LM75Test, ReturnsBothBytesOfOneConversionWhileItDrifts ) {
   chip.temperatureIs( 0, Drift( 50, 1s, 1 ) );
   chip.command( 0 );
   chip.addressed( Direction::Read );
   const int degrees = chip.read();
   clock.advance( 1s );
   EXPECT_EQ( degrees, 0x00 );
   EXPECT_EQ( chip.read(), 0x00 );
   EXPECT_NE( read( 2 ), ( Bytes{ 0x00, 0x00 } ) );
}

TEST_F( LM75Test, ResetsWhenItIsPulledAndInserted ) {
   writeTo( 3, { 0x19, 0x00 } );
   writeTo( 1, { 0x02 } );
   chip.presentIs( false );
   chip.presentIs( true );
   EXPECT_EQ( chip.tOs(), 80 );
   EXPECT_EQ( readFrom( 1, 1 ), Bytes{ 0x00 } );
}

} // namespace

} // namespace SimulatorTest
