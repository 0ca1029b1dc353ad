// Recording a server's transactions, and replaying them.
#include "ManualClock.h"
#include "PrivateFolder.h"
#include "Requests.h"
#include "smbus/Decode.h"
#include "smbus/RecordingFile.h"
#include "smbusd/record/Recorder.h"
#include "smbusd/record/Replay.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <vector>

namespace SmbusdTest {

namespace {

using namespace TestSupport;
using TestSupport::read; // not the system's
using namespace Bus;
using namespace Smbusd;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

Smbus::TransactionResponse answer( const std::string &data ) {
   Smbus::TransactionResponse response;
   response.add_response()->set_data( data );
   return response;
}

class RecordingTest : public ::testing::Test {
 protected:
   std::vector<SmbusRecording::Entry> entries() {
      std::vector<SmbusRecording::Entry> all;
      readRecording( path, [&]( const SmbusRecording::Entry &entry ) { all.push_back( entry ); } );
      return all;
   }
   std::string complaint() {
      try {
         entries();
         return "none";
      } catch ( const RecordingError &error ) {
         return error.what();
      }
   }
   std::string bytes() const {
      std::ifstream stream( path, std::ios::binary );
      return { std::istreambuf_iterator<char>( stream ), {} };
   }
   // The first response's bytes, or the error.
   std::string ask( Executors &executors, const Smbus::TransactionRequest &request ) {
      const Transaction transaction = decode( request, 2s );
      Smbus::TransactionResponse response;
      executors.at( transaction.bus )->run( transaction, response );
      return response.failed() ? response.error() : response.response( 0 ).data();
   }
   TestSupport::PrivateFolder folder;
   const std::string path = folder.file( "night.rec" );
   ManualClock clock;
};

TEST_F( RecordingTest, HoldsTransactionsWithAnswersAndTimes ) {
   clock.advance( 5s );
   Recorder recorder( path, "1.2.3", clock );
   const auto request = transaction( sendByte( 0x70, 1 ), read( 0x48, 0, 2 ) );
   recorder.write( request, answer( "\x19\x80" ), 7s, 30ms );
   recorder.write( request, failure( "it broke" ), 8s, 2s );
   const auto all = entries();
   ASSERT_EQ( all.size(), 3u );
   EXPECT_EQ( all[0].start().version(), "1.2.3" );
   EXPECT_EQ( all[1].transaction().begun_ns(), 2'000'000'000u );
   EXPECT_EQ( all[1].transaction().took_ns(), 30'000'000u );
   EXPECT_EQ( all[1].transaction().request().SerializeAsString(), request.SerializeAsString() );
   EXPECT_EQ( all[1].transaction().response().response( 0 ).data(), "\x19\x80" );
   EXPECT_EQ( all[2].transaction().response().error(), "it broke" );
}

TEST_F( RecordingTest, AppendsToAnEarlierRecording ) {
   Recorder( path, "1", clock ).write( transaction( read( 0x48, 0, 1 ) ), answer( "a" ), 0s, 0s );
   Recorder( path, "2", clock );
   const auto all = entries();
   ASSERT_EQ( all.size(), 3u );
   EXPECT_EQ( all[2].start().version(), "2" );
}

// A server that was killed, or had no room on the disk, leaves the beginning of an entry.
TEST_F( RecordingTest, CutsOffAnUnfinishedEntryBeforeItAddsMore ) {
   Recorder( path, "1", clock ).write( transaction( read( 0x48, 0, 1 ) ), answer( "a" ), 0s, 0s );
   const std::string whole = bytes();
   for ( size_t length = 1 + static_cast<size_t>( whole[0] ); length < whole.size(); ++length ) {
      folder.write( "night.rec", whole.substr( 0, length ) );
      Recorder( path, "2", clock )
         .write( transaction( read( 0x49, 0, 1 ) ), answer( "b" ), 0s, 0s );
      EXPECT_EQ( complaint(), "none" ) << length;
      EXPECT_EQ( entries().size(), 3u ) << length; // start, start, transaction
   }
}

TEST_F( RecordingTest, LeavesAFileAloneThatIsNotARecording ) {
   for ( const char *text : { "{ \"routes\": [] }", "\x01" } ) {
      folder.write( "night.rec", text );
      EXPECT_THROW( Recorder( path, "1", clock ), RecordingError );
      EXPECT_EQ( bytes(), text );
   }
}

TEST_F( RecordingTest, ANewRecordingIsForItsOwnerAlone ) {
   Recorder( path, "1", clock );
   EXPECT_EQ( std::filesystem::status( path ).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write );
}

TEST_F( RecordingTest, NamesTheByteWhereAFileIsNotARecording ) {
   EXPECT_EQ( complaint(), path + ": can't be read: No such file or directory" );
   EXPECT_THROW( Recorder( folder.file( "none/night.rec" ), "1", clock ), std::runtime_error );
   Recorder( path, "1", clock ).write( transaction( read( 0x48, 0, 1 ) ), answer( "a" ), 0s, 0s );
   const std::string whole = bytes();
   folder.write( "night.rec", whole.substr( 0, whole.size() - 1 ) );
   const size_t second = 1 + static_cast<size_t>( whole[0] );
   EXPECT_EQ( complaint(), path + ": byte " + std::to_string( second ) +
                              ": the file ends in the middle of an entry" );
   folder.write( "night.rec", "{ \"routes\": [] }" );
   EXPECT_THAT( complaint(), HasSubstr( path + ": byte 0: " ) );
   folder.write( "night.rec", std::string( 1, '\0' ) );
   EXPECT_EQ( complaint(), path + ": byte 0: not an entry of a recording" );
}

class ReplayTest : public RecordingTest {
 protected:
   void record( const Smbus::TransactionRequest &request,
                const Smbus::TransactionResponse &response, Clock::Time took = {} ) {
      recorder.write( request, response, {}, took );
   }
   Executors replayed() {
      return replay( path, [this]( Clock::Time took ) { waited.push_back( took ); } );
   }
   Recorder recorder{ path, "1", clock };
   const Smbus::TransactionRequest one = transaction( read( 0x48, 0, 1 ) );
   const Smbus::TransactionRequest other = transaction( read( 0x49, 0, 1 ) );
   std::vector<Clock::Time> waited;
};

TEST_F( ReplayTest, AnswersEachTransactionAsItWasAnsweredThen ) {
   record( one, answer( "a" ) );
   record( other, answer( "x" ) );
   record( one, failure( "it broke" ) );
   record( one, answer( "c" ) );
   Executors executors = replayed();
   EXPECT_EQ( ask( executors, other ), "x" );
   EXPECT_EQ( ask( executors, one ), "a" );
   EXPECT_EQ( ask( executors, one ), "it broke" );
   EXPECT_EQ( ask( executors, one ), "c" );
   EXPECT_EQ( ask( executors, one ), "c" ); // more often than recorded
   EXPECT_EQ( ask( executors, other ), "x" );
}

TEST_F( ReplayTest, FindsATransactionByItsRequests ) {
   record( one, answer( "a" ) );
   Executors executors = replayed();
   Smbus::TransactionRequest patient = one;
   patient.set_id( 5 );
   patient.set_retries( 3 );
   patient.set_timeout_ms( 100 );
   EXPECT_EQ( ask( executors, patient ), "a" );
   Smbus::TransactionRequest checked = one;
   checked.mutable_request( 0 )->set_pec( true );
   EXPECT_EQ( ask( executors, checked ),
              "request 1 of 1: read of 1 byte from 0x48 register 0x00 on scd(4):1:2: the recording "
              "has no such transaction" );
   EXPECT_THAT( ask( executors, transaction( read( 0x48, 1, 1 ) ) ), HasSubstr( "no such trans" ) );
   EXPECT_THAT( ask( executors, transaction( read( 0x48, 0, 1 ), read( 0x49, 0, 1 ) ) ),
                HasSubstr( "no such trans" ) );
   const auto write = []( const char *byte ) {
      return transaction( request( Smbus::REQUEST_WRITE, 0x48, 0, 1, byte ) );
   };
   EXPECT_THAT( ask( executors, write( "x" ) ), HasSubstr( "no such trans" ) );
   record( write( "x" ), answer( "" ) );
   executors = replayed();
   EXPECT_EQ( ask( executors, write( "x" ) ), "" );
   EXPECT_THAT( ask( executors, write( "y" ) ), HasSubstr( "no such trans" ) );
}

TEST_F( ReplayTest, WaitsAsLongAsEachAnswerTook ) {
   record( one, answer( "a" ), 30ms );
   record( one, answer( "b" ), 2s );
   Executors executors = replayed();
   ask( executors, one );
   ask( executors, one );
   EXPECT_THAT( waited, ElementsAre( 30ms, 2s ) );
}

TEST_F( ReplayTest, HasTheRecordedBussesAndSkipsInvalidTransactions ) {
   Smbus::TransactionRequest senseless = other;
   senseless.mutable_request( 0 )->clear_type();
   record( senseless, failure( "no type" ) );
   record( {}, {} );
   EXPECT_TRUE( replayed().empty() );
   record( one, answer( "a" ) );
   EXPECT_EQ( replayed().size(), 1u );
}

} // namespace

} // namespace SmbusdTest
