// What becomes of a root bus while a chip on it holds a line, or never ends a transfer.
#include "smbusd/accounts/Quarantine.h"
#include "ManualClock.h"
#include "Requests.h"
#include "simulator/bus/SimulatedBus.h"
#include "simulator/chips/LM75.h"
#include "simulator/chips/PCA9548.h"
#include "smbus/BusLoads.h"
#include "smbus/Decode.h"
#include "smbusd/accounts/Report.h"
#include "smbusd/server/TransactionRunner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace SmbusdTest {

namespace {

using namespace TestSupport;
using TestSupport::read; // not the system's
using namespace Smbusd;
using namespace std::chrono_literals;
using Simulator::BusSegment;
using Simulator::LM75;
using Simulator::PCA9548;
using Simulator::Stuck;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

const Bus::RootBusId rootBus = *Bus::parseRootBusId( "scd(4):1:2" );

// A simulated bus whose transfers are noted. A transfer that fails with a held line takes a second,
// as with an adapter that waits for its timeout.
class NotingBus final : public Bus::RootBus {
 public:
   NotingBus( const BusSegment &segment, ManualClock &clock )
      : bus_( segment, mutex_ ), clock_( clock ) {}
   Bus::Outcome transfer( const Bus::Transfer &transfer ) override {
      log.push_back( describe( transfer ) );
      Bus::Outcome outcome = bus_.transfer( transfer );
      if ( transfer.address == slow ) {
         clock_.advance( 100ms );
         return { .error = "timed out" };
      }
      if ( outcome.error.find( "held low" ) != std::string::npos )
         clock_.advance( held );
      return outcome;
   }
   bool clearLines() override {
      log.push_back( "nine clocks" );
      return bus_.clearLines();
   }
   bool resetMux( uint8_t address ) override {
      log.push_back( fmt::format( "reset {:#04x}", address ) );
      return bus_.resetMux( address );
   }
   std::vector<std::string> log;
   uint8_t slow = 0xFF; // transfers to this address run out of time
   Bus::Clock::Time held{ 0 };

 private:
   std::mutex mutex_;
   Simulator::SimulatedBus bus_;
   ManualClock &clock_;
};

// A thermometer on the bus itself, and one behind each of two channels of a multiplexer.
class QuarantineTest : public ::testing::Test {
 protected:
   void layWith( PCA9548 &mux ) {
      root.attach( 0x70, mux );
      root.attach( 0x4f, onRoot );
      first.attach( 0x48, behindFirst );
      second.attach( 0x48, behindSecond );
      root.join( mux, 0, first );
      root.join( mux, 1, second );
   }
   template <typename... Requests>
   std::string run( const Requests &...requests ) {
      bus.log.clear();
      account.begin( { -1, 1000, 100 } );
      Smbus::TransactionResponse response;
      runner.run( Bus::decode( transaction( requests... ), 5s ), response );
      account.end( response.failed(), 1ms );
      return response.failed() ? response.error() : "good";
   }
   std::string readBehind( uint32_t select ) {
      return run( sendByte( 0x70, select ), read( 0x48, 0, 2 ), sendByte( 0x70, 0 ) );
   }
   std::string readRoot() { return run( read( 0x4f, 0, 2 ) ); }
   std::vector<std::string> leftAlone() const {
      std::vector<std::string> all;
      for ( const Quarantine::Segment &segment : runner.quarantine().all() )
         all.push_back( Bus::describe( segment.told( clock.now() ) ) );
      return all;
   }

   ManualClock clock;
   LM75 onRoot{ "root", clock }, behindFirst{ "temp-front", clock },
      behindSecond{ "temp-rear", clock };
   PCA9548 plain{ "mux" }, withPin{ "mux", true };
   BusSegment root, first, second;
   NotingBus bus{ root, clock };
   BusAccount account{ rootBus, 100000 };
   TransactionRunner runner{ bus, clock, &account };

   const std::string open1 = "send byte 0x01 to 0x70", close = "send byte 0x00 to 0x70";
   const std::string read48 = "read of 2 bytes from 0x48 register 0x00";
   const std::string isHeld = "the data line is held low by temp-front";
};

TEST_F( QuarantineTest, AHeldSegmentWhoseMuxCanBeResetStopsNothingElse ) {
   layWith( withPin );
   behindFirst.faultsAre( { .stuck = Stuck::ForEver } );
   EXPECT_THAT( readBehind( 1 ),
                HasSubstr( "request 2 of 3: " + read48 + " on scd(4):1:2: " + isHeld ) );
   EXPECT_THAT( bus.log,
                ElementsAre( open1, read48, close, "nine clocks", close, "reset 0x70", close ) );
   EXPECT_EQ( readBehind( 2 ), "good" );
   EXPECT_EQ( readRoot(), "good" );
   EXPECT_THAT( leftAlone(), ElementsAre( "the segment 0x70=1 is quarantined for 0 s (" + isHeld +
                                          "), next try in 1 s" ) );
}

TEST_F( QuarantineTest, RequestsThroughAHeldSegmentAreRefusedWithoutATransfer ) {
   layWith( withPin );
   behindFirst.faultsAre( { .stuck = Stuck::ForEver } );
   readBehind( 1 );
   clock.advance( 400ms );
   EXPECT_EQ( readBehind( 1 ),
              "request 1 of 3: send byte 0x01 to 0x70 on scd(4):1:2: the segment 0x70=1 is "
              "quarantined for 0 s (" +
                 isHeld + "), next try in 1 s" );
   EXPECT_THAT( bus.log, IsEmpty() );
}

TEST_F( QuarantineTest, WhatComesBeforeTheHeldSegmentIsCarriedOut ) {
   layWith( withPin );
   behindFirst.faultsAre( { .stuck = Stuck::ForEver } );
   readBehind( 1 );
   EXPECT_THAT(
      run( read( 0x4f, 0, 2 ), sendByte( 0x70, 1 ), read( 0x48, 0, 2 ), sendByte( 0x70, 0 ) ),
      HasSubstr( "request 2 of 4" ) );
   EXPECT_THAT( bus.log, ElementsAre( "read of 2 bytes from 0x4f register 0x00" ) );
}

TEST_F( QuarantineTest, IsTriedAgainAfterOneTwoAndFourSecondsAndComesBackByItself ) {
   layWith( withPin );
   behindFirst.faultsAre( { .stuck = Stuck::ForEver } );
   readBehind( 1 );
   for ( const auto pause : { 1s, 2s, 4s, 4s } ) {
      clock.advance( pause - 1ms );
      EXPECT_THAT( readBehind( 1 ), HasSubstr( "is quarantined" ) );
      clock.advance( 1ms );
      EXPECT_THAT( readBehind( 1 ), HasSubstr( "request 2 of 3" ) ) << pause.count();
   }
   behindFirst.faultsAre( {} );
   clock.advance( 4s );
   EXPECT_EQ( readBehind( 1 ), "good" );
   EXPECT_THAT( leftAlone(), IsEmpty() );
   EXPECT_EQ( readBehind( 1 ), "good" );
}

TEST_F( QuarantineTest, AChipThatOnlyDoesNotAcknowledgeHoldsNothing ) {
   layWith( withPin );
   behindFirst.faultsAre( { .stuck = Stuck::ForEver } );
   readBehind( 1 );
   behindFirst.faultsAre( { .nacks = 1 } );
   clock.advance( 1s );
   EXPECT_THAT( readBehind( 1 ), HasSubstr( "no acknowledge" ) );
   EXPECT_THAT( leftAlone(), IsEmpty() );
}

TEST_F( QuarantineTest, WithoutAResetPinTheWholeBusIsLeftAloneAndSaysBecauseOfWhat ) {
   layWith( plain );
   behindFirst.faultsAre( { .stuck = Stuck::ForEver } );
   readBehind( 1 );
   const std::string words = "the bus, which can't be released from the segment 0x70=1, is "
                             "quarantined for 0 s (" +
                             isHeld + "), next try in 1 s";
   EXPECT_THAT( readRoot(), EndsWith( "on scd(4):1:2: " + words ) );
   EXPECT_THAT( readBehind( 2 ), HasSubstr( words ) );
   EXPECT_THAT( bus.log, IsEmpty() );
   EXPECT_THAT( leftAlone(), ElementsAre( words ) );
}

TEST_F( QuarantineTest, AReleasedBusGoesOnWithoutWaiting ) {
   layWith( plain );
   behindFirst.faultsAre( { .stuck = Stuck::ForEver } );
   readBehind( 1 );
   clock.advance( 1s );
   EXPECT_THAT( readRoot(), HasSubstr( "can't be released" ) ); // tried, and held still
   EXPECT_THAT( bus.log, ElementsAre( close, "nine clocks", close, "reset 0x70" ) );
   behindFirst.faultsAre( {} );
   clock.advance( 2s );
   EXPECT_EQ( readRoot(), "good" );
   EXPECT_EQ( readBehind( 2 ), "good" );
   EXPECT_EQ( readBehind( 1 ), "good" ); // its own time is over, too
   EXPECT_THAT( leftAlone(), IsEmpty() );
}

TEST_F( QuarantineTest, NineClocksFreeWhatTheyCan ) {
   layWith( plain );
   behindFirst.faultsAre( { .stuck = Stuck::UntilClocks } );
   readBehind( 1 );
   EXPECT_THAT( bus.log, ElementsAre( open1, read48, close, "nine clocks", close ) );
   EXPECT_EQ( readBehind( 2 ), "good" );
   clock.advance( 1s );
   EXPECT_EQ( readBehind( 1 ), "good" );
}

TEST_F( QuarantineTest, AResetFreesAChipThatWaitsForIt ) {
   layWith( withPin );
   behindFirst.faultsAre( { .stuck = Stuck::UntilReset } );
   readBehind( 1 );
   clock.advance( 1s );
   EXPECT_EQ( readBehind( 1 ), "good" );
}

TEST_F( QuarantineTest, AChipOnTheBusItselfStopsAllOfItUntilItLetsGo ) {
   layWith( withPin );
   onRoot.faultsAre( { .stuck = Stuck::ForEver } );
   readRoot();
   EXPECT_THAT( readBehind( 1 ), HasSubstr( "the bus is quarantined for 0 s (the data line is held "
                                            "low by root), next try in 1 s" ) );
   onRoot.faultsAre( { .stuck = Stuck::UntilClocks } );
   clock.advance( 1s );
   EXPECT_EQ( readBehind( 1 ), "good" );
   EXPECT_THAT( leftAlone(), IsEmpty() );
}

TEST_F( QuarantineTest, ThreeTransactionsInARowThatRunOutOfTimeAreTooMany ) {
   layWith( plain );
   bus.slow = 0x48;
   for ( int i = 0; i < 2; ++i )
      EXPECT_THAT( readBehind( 1 ), HasSubstr( "timed out" ) );
   EXPECT_THAT( leftAlone(), IsEmpty() );
   EXPECT_THAT( readBehind( 1 ), HasSubstr( "timed out" ) );
   EXPECT_THAT( leftAlone(), ElementsAre( HasSubstr( "the segment 0x70=1 is quarantined for 0 s "
                                                     "(timed out)" ) ) );
   EXPECT_EQ( readRoot(), "good" );
   bus.slow = 0xFF;
   clock.advance( 1s );
   EXPECT_EQ( readBehind( 1 ), "good" );
}

TEST_F( QuarantineTest, AnAnswerBetweenTransactionsThatRanOutOfTimeCounts ) {
   layWith( plain );
   for ( int i = 0; i < 10; ++i ) {
      bus.slow = i % 3 == 2 ? 0xFF : 0x48;
      readBehind( 1 );
   }
   EXPECT_THAT( leftAlone(), IsEmpty() );
}

TEST_F( QuarantineTest, OfNestedMuxesTheOuterOneSetsTheRestFree ) {
   PCA9548 inner{ "inner" };
   BusSegment behindInner;
   LM75 deep{ "temp-deep", clock };
   layWith( withPin );
   first.attach( 0x71, inner );
   first.join( inner, 2, behindInner );
   behindInner.attach( 0x49, deep );
   deep.faultsAre( { .stuck = Stuck::ForEver } );
   const auto readDeep = [&] {
      return run( sendByte( 0x70, 1 ), sendByte( 0x71, 4 ), read( 0x49, 0, 2 ), sendByte( 0x71, 0 ),
                  sendByte( 0x70, 0 ) );
   };
   readDeep();
   EXPECT_EQ( readRoot(), "good" );
   EXPECT_EQ( readBehind( 2 ), "good" );
   EXPECT_THAT( leftAlone(),
                ElementsAre( HasSubstr( "the segment 0x70=1 0x71=4 is quarantined" ) ) );
}

TEST_F( QuarantineTest, ARefusalPutsNothingAmongTheFailures ) {
   layWith( withPin );
   behindFirst.faultsAre( { .stuck = Stuck::ForEver } );
   readBehind( 1 );
   const size_t kept = account.last( true ).size();
   for ( int i = 0; i < 20; ++i )
      EXPECT_THAT( readBehind( 1 ), HasSubstr( "is quarantined" ) );
   EXPECT_EQ( account.last( true ).size(), kept );
   EXPECT_EQ( account.figures().failedTransactions, 21u );
}

TEST_F( QuarantineTest, TheControlSocketsClientsAreToldOfIt ) {
   layWith( withPin );
   behindFirst.faultsAre( { .stuck = Stuck::ForEver } );
   readBehind( 1 );
   clock.advance( 400ms );
   SmbusControl::Request load, last;
   load.set_load( true );
   last.mutable_last()->set_bus( "scd(4):1:2" );
   const KnownBus known( &account, &runner.quarantine() );
   for ( const auto &told : { report( load, { known }, clock.now() ).bus( 0 ).quarantined(),
                              report( last, { known }, clock.now() ).quarantined() } ) {
      ASSERT_EQ( told.size(), 1 );
      EXPECT_EQ( told[0].bus(), "scd(4):1:2" );
      EXPECT_EQ( told[0].path(), "0x70=1" );
      EXPECT_FALSE( told[0].whole_bus() );
      EXPECT_EQ( told[0].reason(), isHeld );
      EXPECT_DOUBLE_EQ( told[0].seconds(), 0.4 );
      EXPECT_DOUBLE_EQ( told[0].next(), 0.6 );
   }
}

// A segment is held for an hour, and each attempt to use it costs seconds: what else is on the root
// bus is asked for once a second, and is never older than two of these periods and one transaction.
TEST_F( QuarantineTest, InAnHourOfAHeldSegmentNothingElseGetsOld ) {
   layWith( withPin );
   behindFirst.faultsAre( { .stuck = Stuck::ForEver } );
   bus.held = 1s;
   const auto end = clock.now() + 1h;
   auto lastRead = clock.now();
   Bus::Clock::Time oldest{ 0 };
   int tries = 0;
   while ( clock.now() < end ) {
      const auto round = clock.now();
      readBehind( 1 );
      tries += !bus.log.empty();
      ASSERT_EQ( readRoot(), "good" );
      ASSERT_EQ( readBehind( 2 ), "good" );
      oldest = std::max( oldest, clock.now() - lastRead );
      lastRead = clock.now();
      clock.advance( std::max<Bus::Clock::Time>( 1s - ( clock.now() - round ), 0s ) );
   }
   EXPECT_LE( oldest, 2 * 1s + 5s );
   EXPECT_GT( tries, 60 );
   EXPECT_LT( tries, 200 ); // of some 3,600: most of the time is for the others
}

} // namespace

} // namespace SmbusdTest
