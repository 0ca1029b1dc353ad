#include "smbusd/server/TransactionRunner.h"
#include "ManualClock.h"
#include "Requests.h"
#include "smbus/Decode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>

namespace SmbusdTest {

namespace {

using namespace TestSupport;
using TestSupport::read; // not the system's
using namespace Bus;
using namespace Smbusd;
using namespace std::chrono_literals;
using ::testing::ElementsAre;

// Answers each read with the number of transfers before it. Transfers in `failures` fail.
class ScriptedBus final : public RootBus {
 public:
   Outcome transfer( const Transfer &transfer ) override {
      const std::string what = describe( transfer );
      log.push_back( what );
      onTransfer();
      if ( failures[what] > 0 && failures[what]-- > 0 )
         return { {}, "it broke", final };
      const bool reads = transfer.kind == Transfer::Kind::Read;
      return { reads ? std::to_string( log.size() - 1 ) : "", {} };
   }
   std::vector<std::string> log;
   std::map<std::string, int> failures; // how often they still fail
   bool final = false;                  // a retry can't help
   std::function<void()> onTransfer = [] {};
};

class TransactionRunnerTest : public ::testing::Test {
 protected:
   template <typename... Requests>
   Smbus::TransactionResponse run( const Requests &...requests ) {
      bus.log.clear();
      Smbus::TransactionRequest message = transaction( requests... );
      message.set_retries( retries );
      Smbus::TransactionResponse response;
      runner.run( decode( message, 2s ), response );
      return response;
   }
   ManualClock clock;
   ScriptedBus bus;
   TransactionRunner runner{ bus, clock };
   unsigned retries = 0;

   const std::string open70 = "send byte 0x01 to 0x70", close70 = "send byte 0x00 to 0x70";
   const std::string open71 = "send byte 0x80 to 0x71", close71 = "send byte 0x00 to 0x71";
   const std::string read48 = "read of 1 byte from 0x48 register 0x00";
};

TEST_F( TransactionRunnerTest, AnswersEveryRequestInOrder ) {
   const auto response =
      run( sendByte( 0x70, 1 ), read( 0x48, 0, 1 ), read( 0x48, 0, 1 ), sendByte( 0x70, 0 ) );
   EXPECT_FALSE( response.failed() );
   ASSERT_EQ( response.response_size(), 4 );
   EXPECT_EQ( response.response( 0 ).data(), "" );
   EXPECT_EQ( response.response( 1 ).data(), "1" );
   EXPECT_EQ( response.response( 2 ).data(), "2" );
   EXPECT_EQ( response.response( 3 ).data(), "" );
}

TEST_F( TransactionRunnerTest, NamesTheFailedRequestAndTheReason ) {
   bus.failures[read48] = 1;
   const auto response =
      run( sendByte( 0x70, 1 ), read( 0x48, 0, 1 ), read( 0x49, 0, 1 ), sendByte( 0x70, 0 ) );
   EXPECT_TRUE( response.failed() );
   EXPECT_EQ( response.error(),
              "request 2 of 4: read of 1 byte from 0x48 register 0x00 on scd(4):1:2: it broke" );
   EXPECT_EQ( response.response_size(), 1 );
}

TEST_F( TransactionRunnerTest, DoesNotRetryAFinalFailure ) {
   retries = 3;
   bus.failures[read48] = 1;
   bus.final = true;
   const auto response = run( read( 0x48, 0, 1 ) );
   EXPECT_EQ( response.error(),
              "request 1 of 1: read of 1 byte from 0x48 register 0x00 on scd(4):1:2: it broke" );
   EXPECT_EQ( bus.log.size(), 1u );
}

TEST_F( TransactionRunnerTest, ClosesAfterAFailureWhatItOpened ) {
   bus.failures[read48] = 1;
   run( sendByte( 0x70, 1 ), sendByte( 0x71, 0x80 ), read( 0x48, 0, 1 ), read( 0x49, 0, 1 ),
        sendByte( 0x71, 0 ), sendByte( 0x70, 0 ) );
   EXPECT_THAT( bus.log, ElementsAre( open70, open71, read48, close71, close70 ) );
}

TEST_F( TransactionRunnerTest, ClosesWhatItOnlyTriedToOpen ) {
   bus.failures[open70] = 1;
   run( sendByte( 0x70, 1 ), sendByte( 0x71, 0x80 ), read( 0x48, 0, 1 ), sendByte( 0x71, 0 ),
        sendByte( 0x70, 0 ) );
   EXPECT_THAT( bus.log, ElementsAre( open70, close70 ) ); // not 0x71: that was never sent
}

TEST_F( TransactionRunnerTest, CarriesOutNothingElseAfterAFailure ) {
   bus.failures[read48] = 1;
   run( read( 0x48, 0, 1 ), sendByte( 0x48, 7 ), request( Smbus::REQUEST_WRITE, 0x70, 0, 1, "x" ),
        request( Smbus::REQUEST_BLOCK_READ, 0x48, 0, 0 ) );
   EXPECT_THAT( bus.log, ElementsAre( read48 ) );
}

TEST_F( TransactionRunnerTest, ReportsADeselectThatFailsToo ) {
   bus.failures[read48] = 1;
   bus.failures[close70] = 1;
   const auto response = run( sendByte( 0x70, 1 ), read( 0x48, 0, 1 ), sendByte( 0x70, 0 ) );
   EXPECT_EQ( response.error(),
              "request 2 of 3: read of 1 byte from 0x48 register 0x00 on scd(4):1:2: it broke; "
              "request 3 of 3: send byte 0x00 to 0x70 on scd(4):1:2: it broke" );
}

TEST_F( TransactionRunnerTest, RetriesAPendingDeselectBeforeTheNextTransaction ) {
   bus.failures[close70] = 1;
   EXPECT_TRUE( run( sendByte( 0x70, 1 ), sendByte( 0x70, 0 ) ).failed() );
   EXPECT_FALSE( run( read( 0x48, 0, 1 ) ).failed() );
   EXPECT_THAT( bus.log, ElementsAre( close70, read48 ) );
   run( read( 0x48, 0, 1 ) );
   EXPECT_THAT( bus.log, ElementsAre( read48 ) );
}

TEST_F( TransactionRunnerTest, KeepsADeselectPendingUntilItIsAcknowledged ) {
   bus.failures[close70] = 3;
   run( sendByte( 0x70, 1 ), sendByte( 0x70, 0 ) );
   for ( int i = 0; i < 2; ++i ) {
      EXPECT_FALSE( run( read( 0x48, 0, 1 ) ).failed() );
      EXPECT_THAT( bus.log, ElementsAre( close70, read48 ) );
   }
   run( read( 0x48, 0, 1 ) );
   EXPECT_THAT( bus.log, ElementsAre( close70, read48 ) );
   run( read( 0x48, 0, 1 ) );
   EXPECT_THAT( bus.log, ElementsAre( read48 ) );
}

TEST_F( TransactionRunnerTest, DropsAPendingDeselectWhenTheMuxIsSetAgain ) {
   bus.failures[close70] = 2;
   run( sendByte( 0x70, 1 ), sendByte( 0x70, 0 ) );
   run( sendByte( 0x70, 1 ), sendByte( 0x70, 0 ) );
   EXPECT_THAT( bus.log, ElementsAre( close70, open70, close70 ) );
   run( read( 0x48, 0, 1 ) );
   EXPECT_THAT( bus.log, ElementsAre( read48 ) );
}

TEST_F( TransactionRunnerTest, HasNoPendingDeselectAfterASingleSendByte ) {
   bus.failures[open70] = 1;
   run( sendByte( 0x70, 1 ) );
   run( read( 0x48, 0, 1 ) );
   EXPECT_THAT( bus.log, ElementsAre( read48 ) );
}

TEST_F( TransactionRunnerTest, RetriesAsOftenAsRequested ) {
   retries = 2;
   bus.failures[read48] = 2;
   EXPECT_FALSE( run( read( 0x48, 0, 1 ) ).failed() );
   EXPECT_THAT( bus.log, ElementsAre( read48, read48, read48 ) );
   bus.failures[read48] = 3;
   EXPECT_EQ(
      run( read( 0x48, 0, 1 ) ).error(),
      "request 1 of 1: read of 1 byte from 0x48 register 0x00 on scd(4):1:2: it broke, 3 tries" );
}

TEST_F( TransactionRunnerTest, TriesOnceByDefault ) {
   bus.failures[read48] = 1;
   EXPECT_TRUE( run( read( 0x48, 0, 1 ) ).failed() );
   EXPECT_THAT( bus.log, ElementsAre( read48 ) );
}

TEST_F( TransactionRunnerTest, RetriesADeselectToo ) {
   retries = 1;
   bus.failures[close70] = 1;
   EXPECT_FALSE( run( sendByte( 0x70, 1 ), sendByte( 0x70, 0 ) ).failed() );
   EXPECT_THAT( bus.log, ElementsAre( open70, close70, close70 ) );
}

TEST_F( TransactionRunnerTest, StartsOnlyDeselectsWhenTheTimeIsOver ) {
   bus.onTransfer = [this] { clock.advance( 1s ); };
   const auto response =
      run( sendByte( 0x70, 1 ), read( 0x48, 0, 1 ), read( 0x48, 0, 1 ), sendByte( 0x70, 0 ) );
   EXPECT_THAT( bus.log, ElementsAre( open70, read48, close70 ) );
   EXPECT_EQ( response.error(),
              "request 3 of 4: read of 1 byte from 0x48 register 0x00 on scd(4):1:2: "
              "not started: the time limit of 2000 ms is over" );
}

TEST_F( TransactionRunnerTest, StopsRetryingWhenTheTimeIsOver ) {
   retries = UINT32_MAX;
   bus.failures[read48] = 1'000'000;
   bus.onTransfer = [this] { clock.advance( 500ms ); };
   EXPECT_EQ(
      run( read( 0x48, 0, 1 ) ).error(),
      "request 1 of 1: read of 1 byte from 0x48 register 0x00 on scd(4):1:2: it broke, 4 tries, "
      "the time limit of 2000 ms is over" );
}

} // namespace

} // namespace SmbusdTest
