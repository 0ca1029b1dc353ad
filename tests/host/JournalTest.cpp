#include "host/journal/Journal.h"

#include "PrivateFolder.h"
#include "support/NoRights.h"

#include <csignal>
#include <fmt/format.h>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Host {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

Health::Event eventAt( int second, const std::string &object = "psu1",
                       std::vector<std::string> explains = {} ) {
   return { .time = Health::WallTime( std::chrono::seconds( second ) ),
            .cause = object + " absent",
            .object = object,
            .words = "no module",
            .number = 2.5,
            .unit = "V",
            .explains = std::move( explains ) };
}

uint64_t addTo( Journal &journal, const Health::Event &added ) {
   std::vector<Health::Event> events{ added };
   journal.add( events );
   return events[0].id;
}

std::vector<uint64_t> idsOf( const std::vector<Health::Event> &events ) {
   std::vector<uint64_t> ids;
   for ( const Health::Event &each : events )
      ids.push_back( each.id );
   return ids;
}

class JournalTest : public ::testing::Test {
 protected:
   // Why the journal can't be opened.
   std::string refusal() const {
      try {
         Journal journal( file_ );
      } catch ( const std::runtime_error &error ) {
         return error.what();
      }
      return "it opens";
   }
   // A journal with some events, and its file's bytes.
   std::string madeJournal() const {
      {
         Journal journal( file_ );
         std::vector<Health::Event> events( 200, eventAt( 1 ) );
         journal.add( events );
      }
      return folder_.read( "host.events" );
   }
   std::vector<std::string> files() const {
      std::vector<std::string> names;
      for ( const auto &entry : fs::directory_iterator( folder_.path() ) )
         names.push_back( entry.path().filename() );
      std::sort( names.begin(), names.end() );
      return names;
   }

   const TestSupport::PrivateFolder folder_;
   const fs::path file_ = folder_.path() / "host.events";
};

TEST_F( JournalTest, KeepsEventsFromOneOpeningToTheNext ) {
   Health::Event added = eventAt( 1, "psu2-slot", { "psu2", "psu2-fan1" } );
   {
      Journal journal( file_ );
      added.id = addTo( journal, added );
      EXPECT_EQ( added.id, 1u );
   }
   Journal journal( file_ );
   EXPECT_EQ( journal.notice(), "" );
   EXPECT_THAT( journal.events( {} ), ElementsAre( added ) );
   EXPECT_EQ( addTo( journal, eventAt( 2 ) ), 2u );
   EXPECT_EQ( journal.lastId(), 2u );
}

TEST_F( JournalTest, GivesTheEventsThatAreAskedFor ) {
   Journal journal = Journal::inMemory();
   addTo( journal, eventAt( 1, "psu1" ) );
   addTo( journal, eventAt( 2, "psu2-slot", { "psu2", "fan" } ) );
   addTo( journal, eventAt( 3, "psu2" ) );
   addTo( journal, eventAt( 4, "" ) );
   const auto ids = [&]( const Journal::Query &query ) { return idsOf( journal.events( query ) ); };
   EXPECT_THAT( ids( {} ), ElementsAre( 1, 2, 3, 4 ) );
   EXPECT_THAT( ids( { .newestFirst = true } ), ElementsAre( 4, 3, 2, 1 ) );
   EXPECT_THAT( ids( { .limit = 2 } ), ElementsAre( 1, 2 ) );
   EXPECT_THAT( ids( { .limit = 2, .newestFirst = true } ), ElementsAre( 4, 3 ) );
   EXPECT_THAT( ids( { .since = Health::WallTime( 3s ) } ), ElementsAre( 3, 4 ) );
   EXPECT_THAT( ids( { .after = 2 } ), ElementsAre( 3, 4 ) );
   EXPECT_THAT( ids( { .after = UINT64_MAX } ), IsEmpty() );
   EXPECT_THAT( ids( { .object = "psu2" } ), ElementsAre( 2, 3 ) ); // the first explains it
   EXPECT_THAT( ids( { .object = "psu" } ), IsEmpty() );
}

TEST_F( JournalTest, TheOldestGoFirstAndIdsCountOn ) {
   {
      Journal journal( file_, 3 );
      for ( int i = 1; i <= 5; ++i )
         addTo( journal, eventAt( i ) );
      EXPECT_THAT( idsOf( journal.events( {} ) ), ElementsAre( 3, 4, 5 ) );
   }
   Journal journal( file_, 1 );
   EXPECT_EQ( addTo( journal, eventAt( 6 ) ), 6u );
   EXPECT_THAT( idsOf( journal.events( {} ) ), ElementsAre( 6 ) );
}

TEST_F( JournalTest, StaysAtTheSizeOfItsCapacity ) {
   Journal journal( file_, 50 );
   std::vector<Health::Event> some( 50, eventAt( 1 ) );
   journal.add( some );
   Sqlite::Database( file_, Sqlite::Database::Use::Write )
      .run( "PRAGMA wal_checkpoint( TRUNCATE )" );
   const auto size = fs::file_size( file_ );
   for ( int i = 0; i < 20; ++i )
      journal.add( some );
   Sqlite::Database( file_, Sqlite::Database::Use::Write )
      .run( "PRAGMA wal_checkpoint( TRUNCATE )" );
   EXPECT_LE( fs::file_size( file_ ), 2 * size );
   EXPECT_EQ( journal.lastId(), 1050u );
}

// The writer tells each id after add() has returned.
TEST_F( JournalTest, IsWholeWhenItsProcessIsKilledAtAnyMoment ) {
   uint64_t told = 0;
   for ( int round = 0; round < 6; ++round ) {
      int ends[2];
      ASSERT_EQ( ::pipe( ends ), 0 );
      const pid_t writer = ::fork();
      if ( writer == 0 ) {
         Journal journal( file_, 40 );
         for ( ;; ) {
            const uint64_t id = addTo( journal, eventAt( 1 ) );
            if ( ::write( ends[1], &id, sizeof id ) != sizeof id )
               ::_exit( 1 );
         }
      }
      ::close( ends[1] );
      for ( int i = 0; i < 10 + 17 * round; ++i )
         ASSERT_EQ( ::read( ends[0], &told, sizeof told ), ssize_t{ sizeof told } );
      ::kill( writer, SIGKILL );
      ::waitpid( writer, nullptr, 0 );
      while ( ::read( ends[0], &told, sizeof told ) == sizeof told ) {
      }
      ::close( ends[0] );
      Journal journal( file_, 40 );
      EXPECT_EQ( journal.notice(), "" );
      EXPECT_GE( journal.lastId(), told );
      EXPECT_LE( journal.lastId(), told + 1 ); // one may not have been told
      const auto ids = idsOf( journal.events( {} ) );
      EXPECT_EQ( ids.size(), std::min<uint64_t>( journal.lastId(), 40 ) );
      EXPECT_EQ( ids.back(), journal.lastId() );
   }
   EXPECT_THAT( files(), ElementsAre( "host.events" ) );
}

TEST_F( JournalTest, AnEmptyFileIsANewJournal ) {
   folder_.write( "host.events", "" );
   Journal journal( file_ );
   EXPECT_EQ( addTo( journal, eventAt( 1 ) ), 1u );
}

TEST_F( JournalTest, AFileThatIsNoJournalIsNamedAndLeftAlone ) {
   const std::string text =
      "a user's file, which is longer than the header of a database is, as most "
      "files are, so that nobody takes it for an empty one";
   folder_.write( "host.events", text );
   EXPECT_EQ( refusal(), file_.string() + ": this is not a journal of events" );
   EXPECT_EQ( folder_.read( "host.events" ), text );
}

TEST_F( JournalTest, AnothersDatabaseIsLeftAlone ) {
   Sqlite::Database( file_, Sqlite::Database::Use::Write ).run( "CREATE TABLE mine( x )" );
   EXPECT_EQ( refusal(), file_.string() + ": this is not a journal of events" );
   EXPECT_EQ(
      Sqlite::Database( file_, Sqlite::Database::Use::Read ).number( "SELECT count(*) FROM mine" ),
      0 );
}

TEST_F( JournalTest, ANewerJournalIsLeftAlone ) {
   const std::string before = madeJournal();
   Sqlite::Database( file_, Sqlite::Database::Use::Write ).run( "PRAGMA user_version = 2" );
   EXPECT_EQ( refusal(),
              file_.string() + ": a newer version of orbis-host has written this journal" );
   Sqlite::Database( file_, Sqlite::Database::Use::Write ).run( "PRAGMA user_version = 1" );
   EXPECT_EQ( Journal( file_ ).lastId(), 200u );
}

TEST_F( JournalTest, ADamagedJournalIsPutAsideAndANewOneBegins ) {
   std::string bytes = madeJournal();
   for ( const auto &[number, name] :
         { std::pair( 1, "host.events.damaged" ), std::pair( 2, "host.events.damaged-2" ) } ) {
      std::string damaged = bytes;
      for ( size_t at = 8192; at < 8192 + 4096; ++at )
         damaged[at] = static_cast<char>( at * 7 );
      folder_.write( "host.events", damaged );
      Journal journal( file_ );
      EXPECT_THAT( journal.notice(),
                   HasSubstr( "the journal of events is damaged (" + file_.string() + ": " ) );
      EXPECT_THAT( journal.notice(),
                   HasSubstr( ") and is now " + folder_.file( name ) + "; a new one begins" ) );
      EXPECT_THAT( journal.notice(), Not( HasSubstr( "\n" ) ) );
      EXPECT_EQ( folder_.read( name ), damaged );
      // It comes behind all that the damaged one may have had.
      EXPECT_GT( addTo( journal, eventAt( 1 ) ), 1'000'000'000u );
      EXPECT_EQ( journal.events( {} ).size(), 1u );
   }
}

TEST_F( JournalTest, AJournalThatWasCutOffIsPutAside ) {
   const std::string bytes = madeJournal();
   folder_.write( "host.events", bytes.substr( 0, bytes.size() / 2 ) );
   EXPECT_THAT( Journal( file_ ).notice(), HasSubstr( "is damaged" ) );
}

TEST_F( JournalTest, SaysWhyAFileCanNotBeOpened ) {
   const fs::path lost = folder_.path() / "none" / "host.events";
   EXPECT_THROW( Journal{ lost }, std::runtime_error );
   try {
      Journal{ lost };
   } catch ( const std::runtime_error &error ) {
      EXPECT_EQ( error.what(), lost.string() + ": No such file or directory" );
   }
   fs::create_directory( file_ );
   EXPECT_EQ( refusal(), file_.string() + ": Is a directory" );
}

TEST_F( JournalTest, SaysWhereItHasNoRights ) {
   madeJournal();
   const NoRights none( file_ );
   EXPECT_EQ( refusal(), file_.string() + ": Permission denied" );
}

TEST_F( JournalTest, AFolderWithoutRightsIsTold ) {
   {
      const NoRights none( folder_.path() );
      EXPECT_EQ( refusal(), file_.string() + ": Permission denied" );
   }
   fs::permissions( folder_.path(), fs::perms( 0700 ) );
}

// No file may grow: to a program it is as a full disk is.
TEST_F( JournalTest, WhatCanNotBeWrittenThrowsAndLeavesTheRest ) {
   Journal journal( file_ );
   addTo( journal, eventAt( 1 ) );
   rlimit before{};
   ::getrlimit( RLIMIT_FSIZE, &before );
   const rlimit none{ .rlim_cur = 0, .rlim_max = before.rlim_max };
   std::signal( SIGXFSZ, SIG_IGN );
   ::setrlimit( RLIMIT_FSIZE, &none );
   std::string why;
   std::vector<Health::Event> events{ eventAt( 2 ), eventAt( 3 ) };
   try {
      journal.add( events );
   } catch ( const std::runtime_error &error ) {
      why = error.what();
   }
   ::setrlimit( RLIMIT_FSIZE, &before );
   std::signal( SIGXFSZ, SIG_DFL );
   EXPECT_EQ( why, file_.string() + ": disk I/O error" );
   EXPECT_EQ( events[0].id, 0u );
   EXPECT_THAT( idsOf( journal.events( {} ) ), ElementsAre( 1 ) );
   journal.add( events );
   EXPECT_THAT( idsOf( journal.events( {} ) ), ElementsAre( 1, 2, 3 ) );
}

TEST_F( JournalTest, IsReadWhileItIsWritten ) {
   Journal journal( file_ );
   addTo( journal, eventAt( 1 ) );
   const Journal reader = Journal::toRead( file_ );
   addTo( journal, eventAt( 2 ) );
   EXPECT_THAT( idsOf( reader.events( {} ) ), ElementsAre( 1, 2 ) );
}

TEST_F( JournalTest, IsReadByOneWhoMayNotWriteItsFolder ) {
   madeJournal();
   fs::permissions( file_, fs::perms( 0444 ) );
   const std::string other = folder_.write( "other", "" );
   fs::permissions( folder_.path(), fs::perms( 0555 ) );
   {
      const NoRights none( other );
      EXPECT_EQ( Journal::toRead( file_ ).events( {} ).size(), 200u );
   }
   fs::permissions( folder_.path(), fs::perms( 0700 ) );
}

TEST_F( JournalTest, ReadingMakesNoJournal ) {
   EXPECT_THROW( Journal::toRead( file_ ), std::runtime_error );
   EXPECT_THAT( files(), IsEmpty() );
}

TEST_F( JournalTest, InMemoryItsIdsComeBehindTheLastOneOfTheFile ) {
   Journal journal = Journal::inMemory( 41 );
   EXPECT_EQ( journal.lastId(), 41u );
   EXPECT_EQ( addTo( journal, eventAt( 1 ) ), 42u );
}

} // namespace
} // namespace Host
