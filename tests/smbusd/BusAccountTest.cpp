#include "smbusd/accounts/BusAccount.h"
#include "ManualClock.h"
#include "Requests.h"
#include "smbus/Decode.h"
#include "smbusd/accounts/Report.h"
#include "smbusd/server/TransactionRunner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/prctl.h>
#include <unistd.h>

#include <functional>
#include <map>

namespace SmbusdTest {

namespace {

using namespace TestSupport;
using TestSupport::read; // not the system's
using namespace Smbusd;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::Pair;

const Bus::RootBusId countedBus = *Bus::parseRootBusId( "scd(4):1:2" );

// Each transfer takes a millisecond.
class SlowBus final : public Bus::RootBus {
 public:
   explicit SlowBus( ManualClock &clock ) : clock_( clock ) {}
   Bus::Outcome transfer( const Bus::Transfer &transfer ) override {
      clock_.advance( 1ms );
      if ( onTransfer )
         onTransfer( transfer );
      const auto found = errors.find( transfer.address );
      if ( found != errors.end() )
         return { .error = found->second };
      return { .data = std::string( transfer.isSendByte() ? 0 : transfer.length, 'x' ) };
   }
   std::map<uint8_t, std::string> errors;
   std::function<void( const Bus::Transfer & )> onTransfer;

 private:
   ManualClock &clock_;
};

class BusAccountTest : public ::testing::Test {
 protected:
   static constexpr Peer me{ -1, 1000, 100 };

   template <typename... Requests>
   bool run( const Peer &peer, const Requests &...requests ) {
      const auto arrived = clock.now();
      account.begin( peer );
      Smbus::TransactionResponse response;
      runner.run( Bus::decode( transaction( requests... ), 2s ), response );
      account.end( response.failed(), clock.now() - arrived );
      return !response.failed();
   }
   // From the reading behind it on; so the mux can't be released.
   void holdALineBehindTheMux() {
      slow.onTransfer = [this]( const Bus::Transfer &transfer ) {
         if ( transfer.address == 0x48 )
            slow.errors[0x70] = slow.errors[0x48] = "the data line is held low by temp-front";
      };
      run( me, sendByte( 0x70, 1 ), read( 0x48, 0, 2 ), sendByte( 0x70, 0 ) );
   }
   static std::vector<std::string> operations( const BusAccount &account, bool failures ) {
      std::vector<std::string> found;
      const auto segments = account.segments();
      for ( const PassedTransfer &passed : account.last( failures ) ) {
         const std::string path = BusAccount::pathTo( segments, passed.segment );
         found.push_back( ( path.empty() ? "" : path + ": " ) + describe( passed.transfer ) );
      }
      return found;
   }
   uint64_t errors( ErrorKind kind ) const {
      return account.figures().errors[static_cast<size_t>( kind )];
   }

   ManualClock clock;
   SlowBus slow{ clock };
   BusAccount account{ countedBus, Bus::usualClock };
   TransactionRunner runner{ slow, clock, &account };
};

TEST_F( BusAccountTest, CountsTransfersWithTheirBitsAndTime ) {
   ASSERT_TRUE( run( me, read( 0x48, 0, 2 ), read( 0x48, 0, 2 ) ) );
   const auto figures = account.figures();
   EXPECT_EQ( figures.totals.transfers, 2u );
   EXPECT_EQ( figures.totals.failures, 0u );
   EXPECT_EQ( figures.totals.wires, ( Bus::WireCount{ 4, 10, 2 } ) );
   EXPECT_EQ( figures.totals.busy, 2ms );
   EXPECT_EQ( figures.transactions, 1u );
}

TEST_F( BusAccountTest, TellsTheLatencyOfAllTransactionsTogether ) {
   run( me, read( 0x48, 0, 2 ) );
   slow.errors[0x48] = "it broke";
   run( me, read( 0x48, 0, 2 ), read( 0x48, 0, 2 ) );
   run( me, read( 0x49, 0, 2 ), read( 0x49, 0, 2 ), read( 0x49, 0, 2 ) );
   EXPECT_EQ( account.figures().latency, account.figures().totals.busy );
   SmbusControl::Request request;
   request.set_load( true );
   const auto loads = report( request, { &account }, 1s );
   EXPECT_EQ( loads.bus( 0 ).latency_ns(), loads.bus( 0 ).totals().busy_ns() );
   EXPECT_GE( loads.bus( 0 ).latency_ns(), 5'000'000u );
}

TEST_F( BusAccountTest, ATransferBelongsToTheSegmentOfTheSelectionsBeforeIt ) {
   ASSERT_TRUE( run( me, sendByte( 0x70, 1 ), sendByte( 0x71, 4 ), read( 0x48, 0, 2 ),
                     sendByte( 0x71, 0 ), read( 0x49, 0, 1 ), sendByte( 0x70, 0 ) ) );
   EXPECT_THAT( operations( account, false ),
                ElementsAre( "send byte 0x01 to 0x70", "0x70=1: send byte 0x04 to 0x71",
                             "0x70=1 0x71=4: read of 2 bytes from 0x48 register 0x00",
                             "0x70=1 0x71=4: send byte 0x00 to 0x71",
                             "0x70=1: read of 1 byte from 0x49 register 0x00",
                             "0x70=1: send byte 0x00 to 0x70" ) );
   const auto segments = account.figures().segments;
   ASSERT_EQ( segments.size(), 3u );
   EXPECT_EQ( segments[0].totals.transfers, 1u );
   EXPECT_EQ( segments[1].totals.transfers, 3u );
   EXPECT_EQ( segments[2].totals.transfers, 2u );
   EXPECT_EQ( segments[2].chips.at( 0x48 ).totals.wires, ( Bus::WireCount{ 2, 5, 1 } ) );
}

TEST_F( BusAccountTest, TheSameSegmentIsFoundAgain ) {
   for ( int i = 0; i < 3; ++i )
      run( me, sendByte( 0x70, 1 ), read( 0x48, 0, 2 ), sendByte( 0x70, 0 ) );
   EXPECT_EQ( account.segments().size(), 2u );
}

TEST_F( BusAccountTest, ASendByteThatNoneFollowsSelectsNothing ) {
   run( me, sendByte( 0x58, 3 ), read( 0x58, 0x79, 2 ) );
   EXPECT_EQ( account.segments().size(), 1u );
}

TEST_F( BusAccountTest, AMuxThatDoesNotAnswerSelectsNothing ) {
   slow.errors[0x70] = Bus::noAddressAcknowledge;
   run( me, sendByte( 0x70, 1 ), read( 0x48, 0, 2 ), sendByte( 0x70, 0 ) );
   EXPECT_EQ( account.segments().size(), 1u );
}

TEST_F( BusAccountTest, TooManySegmentsAreCountedWhereTheyBranchOff ) {
   for ( uint32_t select = 1; select <= BusAccount::maxSegments; ++select )
      run( me, sendByte( 0x70, select ), read( 0x48, 0, 2 ), sendByte( 0x70, 0 ) );
   const auto figures = account.figures();
   EXPECT_EQ( figures.segments.size(), BusAccount::maxSegments );
   EXPECT_EQ( figures.segments[0].chips.at( 0x48 ).totals.transfers, 1u );
}

TEST_F( BusAccountTest, CountsErrorsByTheirReason ) {
   slow.errors = { { 1, std::string( Bus::noAddressAcknowledge ) },
                   { 2, "PEC is 0x01, expected 0x02" },
                   { 3, "the data line is held low by temp-front" },
                   { 4, "timed out" },
                   { 5, "no acknowledge of data byte 1 of 2" } };
   for ( const uint8_t address : { 1, 1, 2, 4, 5, 3 } )
      run( me, read( address, 0, 2 ) );
   EXPECT_EQ( errors( ErrorKind::NoAcknowledge ), 2u );
   EXPECT_EQ( errors( ErrorKind::Pec ), 1u );
   EXPECT_EQ( errors( ErrorKind::HeldLow ), 1u );
   EXPECT_EQ( errors( ErrorKind::Timeout ), 1u );
   EXPECT_EQ( errors( ErrorKind::Other ), 1u );
   EXPECT_EQ( account.figures().failedTransactions, 6u );
}

TEST_F( BusAccountTest, AnAdaptersWordsForATimeoutAndAHeldLineAreKnown ) {
   EXPECT_EQ( errorKindOf( "the adapter's timeout is over" ), ErrorKind::Timeout );
   EXPECT_EQ( errorKindOf( "the bus stays busy" ), ErrorKind::HeldLow );
   EXPECT_EQ( errorKindOf( "the address is held by the kernel driver lm75" ), ErrorKind::Other );
}

TEST_F( BusAccountTest, CountsTheFailuresOfAChipSinceItsLastGoodTransfer ) {
   const auto chip = [this] { return account.figures().segments[0].chips.at( 0x48 ); };
   slow.errors[0x48] = Bus::noAddressAcknowledge;
   run( me, read( 0x48, 0, 2 ) );
   slow.errors[0x48] = "PEC is 0x01, expected 0x02";
   run( me, read( 0x48, 0, 2 ) );
   run( me, read( 0x49, 0, 2 ) ); // another chip's says nothing of this one
   EXPECT_EQ( chip().failuresInARow, 2u );
   EXPECT_EQ( chip().lastFailure, ErrorKind::Pec );
   slow.errors.clear();
   run( me, read( 0x48, 0, 2 ) );
   EXPECT_EQ( chip().failuresInARow, 0u );
   EXPECT_EQ( chip().totals.failures, 2u );
}

TEST_F( BusAccountTest, KnowsWhereTheFirstTransferOfAHeldBusWasUntilOneIsGood ) {
   const auto held = [this]() -> std::string {
      const auto figures = account.figures();
      return figures.heldSegment ? BusAccount::pathTo( figures.segments, *figures.heldSegment )
                                 : "not held";
   };
   slow.errors[0x49] = Bus::noAddressAcknowledge;
   run( me, read( 0x49, 0, 2 ) );
   EXPECT_EQ( held(), "not held" );
   holdALineBehindTheMux();
   run( me, read( 0x48, 0, 2 ) );
   run( me, read( 0x49, 0, 2 ) );
   EXPECT_EQ( held(), "0x70=1" );
   slow.errors.clear();
   slow.onTransfer = {};
   clock.advance( 1min ); // a held bus is left alone for a while
   run( me, read( 0x49, 0, 2 ) );
   EXPECT_EQ( held(), "not held" );
   slow.errors[0x49] = "timed out";
   run( me, read( 0x49, 0, 2 ) );
   EXPECT_EQ( held(), "" ); // on the bus itself
}

TEST_F( BusAccountTest, TellsTheControlSocketsClientsOfFailuresAndAHeldBus ) {
   SmbusControl::Request request;
   request.set_load( true );
   run( me, read( 0x48, 0, 2 ) );
   EXPECT_FALSE( report( request, { &account }, 0s ).bus( 0 ).has_held() );
   holdALineBehindTheMux();
   const auto bus = report( request, { &account }, 0s ).bus( 0 );
   EXPECT_EQ( bus.held(), "0x70=1" );
   EXPECT_EQ( bus.segment( 0 ).chip( 0 ).failures_in_a_row(), 0u );
   EXPECT_EQ( bus.segment( 1 ).path(), "0x70=1" );
   EXPECT_EQ( bus.segment( 1 ).chip( 0 ).failures_in_a_row(), 1u );
   EXPECT_EQ( bus.segment( 1 ).chip( 0 ).last_failure(), SmbusControl::ChipLoad::HELD_LOW );
}

TEST_F( BusAccountTest, EveryRetryIsATransfer ) {
   slow.errors[0x48] = Bus::noAddressAcknowledge;
   Smbus::TransactionRequest message = transaction( read( 0x48, 0, 2 ) );
   message.set_retries( 2 );
   Smbus::TransactionResponse response;
   runner.run( Bus::decode( message, 2s ), response );
   EXPECT_EQ( account.figures().totals.wires, ( Bus::WireCount{ 3, 3, 3 } ) );
}

TEST_F( BusAccountTest, CountsForEachClient ) {
   const Peer self{ -1, 1000, getpid() }, other{ -1, 1001, 101 };
   run( self, read( 0x48, 0, 2 ) );
   run( other, read( 0x48, 0, 2 ), read( 0x48, 0, 2 ) );
   const auto clients = account.figures().clients;
   ASSERT_EQ( clients.size(), 2u );
   EXPECT_EQ( clients[0].user, 1001u );
   EXPECT_EQ( clients[0].totals.transfers, 2u );
   EXPECT_EQ( clients[1].process, getpid() );
   EXPECT_EQ( clients[1].totals.busy, 1ms );
   EXPECT_NE( clients[1].program, "" );
}

// A program may give itself any name; who asks for the loads must be able to read the answer.
TEST_F( BusAccountTest, AProgramsNameIsPlainText ) {
   ::prctl( PR_SET_NAME, "a\xFF\x1B[31mb" );
   run( { -1, 1000, ::getpid() }, read( 0x48, 0, 2 ) );
   ::prctl( PR_SET_NAME, "smbusd_tests" );
   EXPECT_EQ( account.figures().clients.at( 0 ).program, "a??[31mb" );
   SmbusControl::Request request;
   request.set_load( true );
   SmbusControl::Response heard;
   EXPECT_TRUE( heard.ParseFromString( report( request, { &account }, 1s ).SerializeAsString() ) );
}

TEST_F( BusAccountTest, ClientsThatEndedLongAgoAreCountedTogether ) {
   for ( pid_t process = 1; process <= pid_t{ BusAccount::maxClients } + 3; ++process )
      run( { -1, 1000, process }, read( 0x48, 0, 2 ) );
   const auto clients = account.figures().clients;
   ASSERT_EQ( clients.size(), BusAccount::maxClients + 1 );
   EXPECT_EQ( clients.back().process, 0 );
   EXPECT_EQ( clients.back().transactions, 3u );
   EXPECT_EQ( clients.back().totals.transfers, 3u );
}

TEST_F( BusAccountTest, KeepsTheLastTransfers ) {
   for ( unsigned i = 0; i < PassedTransfers::capacity + 5; ++i )
      run( me, read( 0x48, i & 0xFF, 1 ) );
   const auto last = operations( account, false );
   ASSERT_EQ( last.size(), PassedTransfers::capacity );
   EXPECT_EQ( last.front(), "read of 1 byte from 0x48 register 0x05" );
   EXPECT_EQ( last.back(), "read of 1 byte from 0x48 register 0x04" );
}

TEST_F( BusAccountTest, KeepsOnlyTheBeginningOfLongData ) {
   run( me, read( 0x50, 0, 1000 ) );
   const auto last = account.last( false );
   ASSERT_EQ( last.size(), 1u );
   EXPECT_EQ( last[0].outcome.data.size(), PassedTransfers::largestData );
   EXPECT_EQ( last[0].cut, 1000 - PassedTransfers::largestData );
}

TEST_F( BusAccountTest, KeepsWhatLedToAFailure ) {
   slow.errors[0x49] = "it broke";
   for ( unsigned i = 0; i < 20; ++i )
      run( me, read( 0x48, i, 1 ) );
   run( me, read( 0x49, 0, 1 ) );
   for ( unsigned i = 0; i < PassedTransfers::capacity; ++i )
      run( me, read( 0x48, i & 0xFF, 1 ) );
   const auto kept = operations( account, true );
   ASSERT_EQ( kept.size(), PassedTransfers::keptBefore );
   EXPECT_EQ( kept.front(), "read of 1 byte from 0x48 register 0x05" );
   EXPECT_EQ( kept.back(), "read of 1 byte from 0x49 register 0x00" );
}

TEST_F( BusAccountTest, TwoFailuresShareWhatLedToBoth ) {
   slow.errors[0x49] = "it broke";
   run( me, read( 0x48, 1, 1 ) );
   run( me, read( 0x49, 0, 1 ) );
   run( me, read( 0x49, 0, 2 ) );
   EXPECT_THAT( operations( account, true ),
                ElementsAre( "read of 1 byte from 0x48 register 0x01",
                             "read of 1 byte from 0x49 register 0x00",
                             "read of 2 bytes from 0x49 register 0x00" ) );
}

TEST( LatenciesTest, EachTimeIsInAStepThatIsAtMostAnEighthLonger ) {
   for ( const uint64_t time : { 0ull, 1ull, 7ull, 8ull, 15ull, 16ull, 17ull, 1000ull, 123456789ull,
                                 9'000'000'000ull, 0x7FFF'FFFF'FFFF'FFFFull } ) {
      Latencies latencies;
      latencies.add( Latencies::Time( static_cast<int64_t>( time ) ) );
      latencies.each( [&]( uint64_t longest, uint64_t count ) {
         EXPECT_EQ( count, 1u );
         EXPECT_GE( longest, time );
         EXPECT_LE( longest - time, time / 8 ) << time;
      } );
   }
}

TEST( LatenciesTest, StepsComeInTheOrderOfTime ) {
   Latencies latencies;
   for ( const auto took : { 5ms, 1ms, 5ms, 2ms } )
      latencies.add( took );
   std::vector<std::pair<uint64_t, uint64_t>> steps;
   latencies.each(
      [&]( uint64_t longest, uint64_t count ) { steps.emplace_back( longest, count ); } );
   ASSERT_EQ( steps.size(), 3u );
   EXPECT_LT( steps[0].first, steps[1].first );
   EXPECT_EQ( steps[2].second, 2u );
}

} // namespace

} // namespace SmbusdTest
