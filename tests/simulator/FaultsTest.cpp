// Faults of a chip as the bus sees them.
#include "ManualClock.h"
#include "simulator/bus/SimulatedBus.h"
#include "simulator/chips/LM75.h"
#include "simulator/chips/PmbusSupply.h"

#include <gtest/gtest.h>

namespace SimulatorTest {

namespace {

using namespace TestSupport;
using namespace Bus;
using namespace Simulator;
using namespace std::chrono_literals;
using Kind = Transfer::Kind;

class FaultsTest : public ::testing::Test {
 protected:
   FaultsTest() {
      root.attach( 0x70, mux );
      root.attach( 0x48, thermometer );
      root.join( mux, 0, behind );
      behind.attach( 0x58, supply );
      thermometer.temperatureIs( 25.5 );
      selectMux( 1 );
   }
   Outcome selectMux( uint32_t byte ) {
      return bus.transfer( { .kind = Kind::Write, .address = 0x70, .offset = byte } );
   }
   Outcome temperature() {
      return bus.transfer( { .kind = Kind::Read, .address = 0x48, .offset = 0, .length = 2 } );
   }
   Outcome voutMode() {
      return bus.transfer(
         { .kind = Kind::Read, .address = 0x58, .offset = 0x20, .length = 1, .pec = true } );
   }
   Outcome model() {
      return bus.transfer( { .kind = Kind::BlockRead, .address = 0x58, .offset = 0x9A } );
   }

   ManualClock clock;
   PCA9548 mux{ "mux" };
   LM75 thermometer{ "temp", clock };
   PmbusSupply supply{ "psu", 0x58, clock, {}, { "", "KP-850", "", "" } };
   BusSegment root, behind;
   std::mutex mutex;
   SimulatedBus bus{ root, mutex };
};

TEST_F( FaultsTest, NacksTheFirstOfEveryNTransfers ) {
   thermometer.faultsAre( { .nacks = 1, .outOf = 3 } );
   std::string seen;
   for ( int i = 0; i < 7; ++i )
      seen += temperature().ok() ? '+' : '-';
   EXPECT_EQ( seen, "-++-++-" );
   EXPECT_EQ( selectMux( 0 ).error, "" );
   thermometer.faultsAre( { .nacks = 1 } );
   EXPECT_EQ( temperature().error, noAddressAcknowledge );
   EXPECT_EQ( temperature().error, noAddressAcknowledge );
   thermometer.faultsAre( {} );
   EXPECT_EQ( temperature().data, "\x19\x80" );
}

TEST_F( FaultsTest, BreaksPacketErrorCodesInBothDirections ) {
   EXPECT_EQ( voutMode().data, "\x17" );
   supply.faultsAre( { .badPec = true } );
   EXPECT_EQ( voutMode().error, "PEC is 0x1b, expected 0xe4" );
   const Transfer command{ .kind = Kind::Write,
                           .address = 0x58,
                           .offset = 0x3B,
                           .length = 2,
                           .data = std::string( "\x64\x00", 2 ),
                           .pec = true };
   EXPECT_EQ( bus.transfer( command ).error, "no acknowledge of the PEC" );
}

TEST_F( FaultsTest, BlocksEveryConnectedSegment ) {
   supply.faultsAre( { .stuck = Stuck::ForEver } );
   EXPECT_EQ( temperature().error, "the data line is held low by psu" );
   EXPECT_EQ( selectMux( 0 ).error, "the data line is held low by psu" );
   supply.faultsAre( {} );
   selectMux( 0 );
   supply.faultsAre( { .stuck = Stuck::ForEver } );
   EXPECT_TRUE( temperature().ok() ); // it is behind a closed channel
   selectMux( 1 );
   EXPECT_FALSE( temperature().ok() );
   supply.presentIs( false );
   EXPECT_TRUE( temperature().ok() );
}

TEST_F( FaultsTest, AChipLetsGoAfterNineClocksWhereTheyReachIt ) {
   supply.faultsAre( { .stuck = Stuck::UntilClocks } );
   thermometer.faultsAre( { .stuck = Stuck::ForEver } );
   EXPECT_TRUE( bus.clearLines() );
   EXPECT_EQ( supply.faults().stuck, Stuck::No );
   EXPECT_EQ( thermometer.faults().stuck, Stuck::ForEver );
}

TEST_F( FaultsTest, AMuxWithoutAResetPinCannotBeReset ) { EXPECT_FALSE( bus.resetMux( 0x70 ) ); }

TEST_F( FaultsTest, StretchesTheClock ) {
   thermometer.faultsAre( { .slow = 30ms } );
   const RealClock real;
   EXPECT_EQ( temperature().data, "\x19\x80" );
   EXPECT_GE( real.now(), 30ms );
}

TEST_F( FaultsTest, SendsAWrongBlockCount ) {
   EXPECT_EQ( model().data, "KP-850" );
   supply.faultsAre( { .blockCount = 2 } );
   EXPECT_EQ( model().data, "KP" );
   supply.faultsAre( { .blockCount = 0 } );
   EXPECT_EQ( model().data, "" );
}

TEST_F( FaultsTest, ReturnsAnAnswerOfTheWrongSize ) {
   thermometer.faultsAre( { .answerSize = 1 } );
   EXPECT_EQ( temperature().data, "\x19" );
   thermometer.faultsAre( { .answerSize = 3 } );
   EXPECT_EQ( temperature().data, std::string( "\x19\x80\x00", 3 ) );
}

TEST_F( FaultsTest, SendsOnlyOnes ) {
   thermometer.faultsAre( { .allOnes = true } );
   EXPECT_EQ( temperature().data, "\xFF\xFF" );
   supply.faultsAre( { .allOnes = true } );
   EXPECT_EQ( voutMode().error, "PEC is 0xff, expected 0x72" ); // its packet error code, too
}

TEST_F( FaultsTest, CorruptsOneRegisterWithoutAnError ) {
   thermometer.faultsAre( { .corrupted = { { 0, 0x80 } } } );
   EXPECT_EQ( temperature().data, "\x99\x80" );
   EXPECT_EQ(
      bus.transfer( { .kind = Kind::Read, .address = 0x48, .offset = 3, .length = 1 } ).data, "P" );
}

} // namespace

} // namespace SimulatorTest
