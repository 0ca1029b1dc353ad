// Transfers through multiplexers.
#include "ManualClock.h"
#include "simulator/bus/SimulatedBus.h"
#include "simulator/chips/LM75.h"

#include <gtest/gtest.h>

namespace SimulatorTest {

namespace {

using namespace TestSupport;
using namespace Bus;
using namespace Simulator;
using Kind = Transfer::Kind;

// A PCA9548 at 0x70 with an LM75 at 0x48 behind channel 0 and behind channel 1, another mux at
// 0x71 with an LM75 at 0x49 behind channel 2, and an LM75 at 0x4A before the mux.
class MuxedBusTest : public ::testing::Test {
 protected:
   MuxedBusTest() {
      for ( const auto &[chip, celsius] :
            { std::pair( &first, 24.5 ), { &second, 31.0 }, { &deep, 58.5 }, { &front, -3.5 } } )
         chip->temperatureIs( celsius );
      root.attach( 0x70, mux );
      root.attach( 0x4A, front );
      channel0.attach( 0x48, first );
      channel1.attach( 0x48, second );
      channel2.attach( 0x71, inner );
      behindInner.attach( 0x49, deep );
      root.join( mux, 0, channel0 );
      root.join( mux, 1, channel1 );
      root.join( mux, 2, channel2 );
      channel2.join( inner, 7, behindInner );
   }
   Outcome send( uint8_t address, uint32_t byte, bool pec = false ) {
      return bus.transfer(
         { .kind = Kind::Write, .address = address, .offset = byte, .pec = pec } );
   }
   Outcome read( uint8_t address ) {
      return bus.transfer( { .kind = Kind::Read, .address = address, .length = 2 } );
   }

   ManualClock clock;
   PCA9548 mux{ "mux" }, inner{ "inner" };
   LM75 first{ "first", clock }, second{ "second", clock }, deep{ "deep", clock },
      front{ "front", clock };
   BusSegment root, channel0, channel1, channel2, behindInner;
   std::mutex mutex;
   SimulatedBus bus{ root, mutex };
   const std::string front35 = "\xFC\x80";
};

TEST_F( MuxedBusTest, ReachesOnlySelectedChannels ) {
   EXPECT_EQ( read( 0x48 ).error, "no acknowledge of the address" );
   send( 0x70, 0x01 );
   EXPECT_EQ( read( 0x48 ).data, "\x18\x80" );
   send( 0x70, 0x02 );
   EXPECT_EQ( read( 0x48 ).data, std::string( "\x1F\x00", 2 ) );
   send( 0x70, 0x00 );
   EXPECT_EQ( read( 0x48 ).error, "no acknowledge of the address" );
}

TEST_F( MuxedBusTest, ReachesThroughTwoMuxesInARow ) {
   send( 0x70, 0x04 );
   EXPECT_FALSE( read( 0x49 ).ok() );
   send( 0x71, 0x80 );
   EXPECT_EQ( read( 0x49 ).data, "\x3A\x80" );
   send( 0x70, 0x00 );
   EXPECT_FALSE( read( 0x49 ).ok() );
   EXPECT_FALSE( send( 0x71, 0x00 ).ok() ); // it stays open but can't be reached
}

TEST_F( MuxedBusTest, ReachesChipsBeforeAMux ) {
   EXPECT_EQ( read( 0x4A ).data, front35 );
   send( 0x70, 0xFF );
   EXPECT_EQ( read( 0x4A ).data, front35 );
}

TEST_F( MuxedBusTest, CollidesWhenTwoSelectedChannelsHaveTheSameAddress ) {
   send( 0x70, 0x03 );
   const Outcome outcome = read( 0x48 );
   EXPECT_EQ( outcome.error, "collision of first and second" );
   EXPECT_EQ( outcome.data, "" );
}

TEST_F( MuxedBusTest, WritesToBothChipsOfACollision ) {
   send( 0x70, 0x03 );
   const Outcome outcome = bus.transfer(
      { .kind = Kind::Write, .address = 0x48, .offset = 3, .length = 2, .data = { 0x19, 0x00 } } );
   EXPECT_EQ( outcome.error, "collision of first and second" );
   EXPECT_EQ( first.tOs(), 25 );
   EXPECT_EQ( second.tOs(), 25 );
}

TEST_F( MuxedBusTest, ReachesNothingBehindAPulledMux ) {
   send( 0x70, 0x01 );
   mux.presentIs( false );
   EXPECT_FALSE( read( 0x48 ).ok() );
   EXPECT_EQ( send( 0x70, 0x01 ).error, "no acknowledge of the address" );
   mux.presentIs( true );
   EXPECT_FALSE( read( 0x48 ).ok() ); // after power-on
}

TEST_F( MuxedBusTest, DoesNotReachAPulledChip ) {
   front.presentIs( false );
   EXPECT_EQ( read( 0x4A ).error, "no acknowledge of the address" );
}

// CRC-8 of E0 01 is 44. A chip without PEC stores that byte.
TEST_F( MuxedBusTest, WritesThePecAsDataToAChipWithoutPec ) {
   EXPECT_TRUE( send( 0x70, 0x01, true ).ok() );
   EXPECT_EQ( bus.transfer( { .kind = Kind::Read, .address = 0x70 } ).data, "\x44" );
}

} // namespace

} // namespace SimulatorTest
