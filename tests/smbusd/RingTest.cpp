// A recording that takes a bounded room, and what it keeps of failures.
#include "ManualClock.h"
#include "PrivateFolder.h"
#include "Requests.h"
#include "smbus/Decode.h"
#include "smbus/RecordingFile.h"
#include "smbusd/record/Recorder.h"
#include "smbusd/record/Replay.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <regex>
#include <vector>

namespace SmbusdTest {

namespace {

using namespace TestSupport;
using TestSupport::read; // not the system's
using namespace Smbusd;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

class RingTest : public ::testing::Test {
 protected:
   // The entry's number is its time.
   void write( int number, const std::string &error = {} ) {
      Smbus::TransactionResponse response;
      if ( error.empty() )
         response.add_response()->set_data( std::string( 100, 'x' ) );
      else
         response = Bus::failure( error );
      recorder->write( transaction( read( 0x48, 0, 100 ) ), response,
                       std::chrono::seconds( number ), 1ms );
   }
   void start( uint64_t kept ) { recorder.emplace( path, "1", clock, kept ); }
   // The numbers of the transactions, and a 0 for a start.
   static std::vector<int> numbers( const std::string &of ) {
      std::vector<int> all;
      Bus::readRecording( of, [&]( const SmbusRecording::Entry &entry ) {
         all.push_back( static_cast<int>( entry.transaction().begun_ns() / 1'000'000'000 ) );
      } );
      return all;
   }
   static std::vector<int> range( int first, int last ) {
      std::vector<int> all{ 0 };
      for ( int i = first; i <= last; ++i )
         all.push_back( i );
      return all;
   }
   std::vector<std::string> failureFiles() const {
      std::vector<std::string> found;
      for ( const auto &entry : fs::directory_iterator( folder.path() ) ) {
         if ( entry.path().string().starts_with( path + ".failed-" ) )
            found.push_back( entry.path() );
      }
      std::sort( found.begin(), found.end() );
      return found;
   }
   TestSupport::PrivateFolder folder;
   const std::string path = folder.file( "night.rec" );
   ManualClock clock;
   std::optional<Recorder> recorder;
};

TEST_F( RingTest, TakesAtMostTheGivenRoomAndHasTheNewestEntriesWithoutAGap ) {
   start( 10'000 );
   size_t largest = 0;
   for ( int i = 1; i <= 500; ++i ) {
      write( i );
      const size_t earlier = fs::exists( path + ".1" ) ? fs::file_size( path + ".1" ) : 0;
      largest = std::max<uintmax_t>( largest, fs::file_size( path ) + earlier );
      const std::vector<int> all = numbers( path );
      ASSERT_EQ( all, range( all.at( 1 ), i ) );
   }
   EXPECT_LE( largest, 10'000u );
   EXPECT_GE( numbers( path ).size(), 5'000u / 200 ); // half of the room at least
   EXPECT_EQ( std::distance( fs::directory_iterator( folder.path() ), {} ), 2 );
}

TEST_F( RingTest, BothFilesAreForTheirOwnerAloneAndBeginWithTheStart ) {
   start( 10'000 );
   for ( int i = 1; i <= 100; ++i )
      write( i );
   for ( const std::string &file : { path, path + ".1" } ) {
      EXPECT_EQ( fs::status( file ).permissions(), fs::perms::owner_read | fs::perms::owner_write );
      std::optional<SmbusRecording::Entry> first;
      Bus::readRecording( file, [&]( const SmbusRecording::Entry &entry ) {
         if ( !first )
            first = entry;
      } );
      EXPECT_TRUE( first->has_start() );
   }
}

TEST_F( RingTest, GoesOnWithTheFilesOfAnEarlierRun ) {
   start( 10'000 );
   for ( int i = 1; i <= 40; ++i )
      write( i );
   start( 10'000 );
   for ( int i = 41; i <= 45; ++i )
      write( i );
   const std::vector<int> all = numbers( path );
   EXPECT_EQ( std::count( all.begin(), all.end(), 0 ), 2 ); // the starts of two runs
   EXPECT_EQ( all.back(), 45 );
}

TEST_F( RingTest, IsReadWhenOnlyTheEarlierFileIsThere ) { // ended just between the two
   start( 10'000 );
   write( 1 );
   recorder.reset();
   fs::rename( path, path + ".1" );
   EXPECT_EQ( numbers( path ), range( 1, 1 ) );
}

TEST_F( RingTest, IsReplayedFromBothFiles ) {
   start( 10'000 );
   for ( int i = 1; i <= 45; ++i )
      write( i );
   ASSERT_TRUE( fs::exists( path + ".1" ) );
   EXPECT_EQ( replay( path, []( auto ) {} ).size(), 1u );
}

TEST_F( RingTest, KeepsWhatIsAroundAFailure ) {
   start( 10'000 );
   for ( int i = 1; i <= 300; ++i )
      write( i );
   write( 301, "it broke" );
   for ( int i = 302; i <= 1000; ++i )
      write( i );
   ASSERT_EQ( failureFiles().size(), 1u );
   const std::string file = failureFiles()[0];
   EXPECT_EQ( numbers( file ), range( 101, 351 ) ); // 200 before, 50 after
   EXPECT_EQ( fs::status( file ).permissions(), fs::perms::owner_read | fs::perms::owner_write );
   EXPECT_TRUE( std::regex_match( file, std::regex( ".*/night\\.rec\\.failed-20\\d{6}T\\d{6}Z" ) ) )
      << file;
}

TEST_F( RingTest, TheSameErrorHasOneFileAnHour ) {
   start( 10'000 );
   for ( int i = 1; i <= 200; ++i )
      write( i, "no acknowledge" );
   EXPECT_EQ( failureFiles().size(), 1u );
   clock.advance( 59min );
   write( 201, "no acknowledge" );
   EXPECT_EQ( failureFiles().size(), 1u );
   write( 202, "another" );
   EXPECT_EQ( failureFiles().size(), 2u );
   for ( int i = 203; i <= 300; ++i )
      write( i );
   clock.advance( 1min );
   write( 301, "no acknowledge" );
   EXPECT_EQ( failureFiles().size(), 3u );
}

TEST_F( RingTest, WhatIsRefusedSinceItsSegmentIsQuarantinedMakesNoFile ) {
   start( 10'000 );
   for ( int i = 1; i <= 20; ++i )
      write( i, "the segment 0x70=1 is quarantined for " + std::to_string( i ) + " s" );
   EXPECT_EQ( failureFiles().size(), 0u );
}

TEST_F( RingTest, AFailureNearAnotherGoesIntoItsFile ) {
   start( 10'000 );
   write( 1, "one" );
   write( 2, "other" );
   EXPECT_EQ( failureFiles().size(), 1u );
   for ( int i = 3; i <= 100; ++i )
      write( i );
   EXPECT_EQ( numbers( failureFiles()[0] ), range( 1, 52 ) );
}

TEST_F( RingTest, KeepsTheSixteenNewestFailures ) {
   start( 10'000 );
   for ( int i = 0; i < 20; ++i ) {
      write( 100 * i + 1, "error " + std::to_string( i ) );
      for ( int more = 2; more <= 60; ++more )
         write( 100 * i + more );
   }
   const auto files = failureFiles();
   ASSERT_EQ( files.size(), 16u );
   const auto last = numbers( files.back() );
   EXPECT_NE( std::find( last.begin(), last.end(), 1901 ), last.end() );
}

TEST_F( RingTest, AFailuresFileHasAMebibyteAtMost ) {
   start( 1'000'000'000 );
   Smbus::TransactionResponse large;
   large.add_response()->set_data( std::string( 300'000, 'x' ) );
   for ( int i = 1; i <= 10; ++i )
      recorder->write( transaction( read( 0x48, 0, 1 ) ), large, 0s, 0s );
   write( 11, "it broke" );
   for ( int i = 1; i <= 10; ++i )
      recorder->write( transaction( read( 0x48, 0, 1 ) ), large, 0s, 0s );
   ASSERT_EQ( failureFiles().size(), 1u );
   EXPECT_LE( fs::file_size( failureFiles()[0] ), 1u << 20 );
   const auto kept = numbers( failureFiles()[0] );
   EXPECT_NE( std::find( kept.begin(), kept.end(), 11 ), kept.end() );
}

TEST_F( RingTest, ARecordingWithoutABoundKeepsAllAndNoFailuresApart ) {
   recorder.emplace( path, "1", clock );
   write( 1, "it broke" );
   for ( int i = 2; i <= 200; ++i )
      write( i );
   EXPECT_EQ( numbers( path ), range( 1, 200 ) );
   EXPECT_EQ( std::distance( fs::directory_iterator( folder.path() ), {} ), 1 );
}

} // namespace

} // namespace SmbusdTest
