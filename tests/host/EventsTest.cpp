#include "host/serve/Events.h"

#include "PrivateFolder.h"
#include "host/journal/EventText.h"

#include <csignal>
#include <gmock/gmock.h>
#include <sys/resource.h>

namespace Host {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

const Health::Event absentSupply{ .time = Health::WallTime( std::chrono::seconds( 1 ) ),
                                  .cause = "psu2-slot absent",
                                  .object = "psu2-slot",
                                  .level = Health::Level::Critical,
                                  .words = "no module",
                                  .explains = { "psu2", "psu2-fan1" } };

class EventsTest : public ::testing::Test {
 protected:
   // What is logged meanwhile.
   template <class Do>
   static std::string logOf( Do what ) {
      ::testing::internal::CaptureStdout(); // spdlog's default
      what();
      return ::testing::internal::GetCapturedStdout();
   }

   const TestSupport::PrivateFolder folder_;
   const std::filesystem::path file_ = folder_.path() / "host.events";
};

TEST_F( EventsTest, AnEventIsInTheJournalAndALineOfTheLog ) {
   Events events( file_ );
   Health::Event clear = absentSupply;
   clear.what = Health::Event::What::Clear;
   clear.words = "";
   clear.explains = {};
   const std::string log = logOf( [&] { events.add( { absentSupply, clear } ); } );
   EXPECT_THAT( log, HasSubstr( "[error] critical: psu2-slot absent: no module; "
                                "explains psu2, psu2-fan1\n" ) );
   EXPECT_THAT( log, HasSubstr( "[info] clear: psu2-slot absent\n" ) );
   EXPECT_EQ( events.lastId(), 2u );
   EXPECT_EQ( Journal::toRead( file_ ).events( {} ).at( 0 ).cause, absentSupply.cause );
}

TEST_F( EventsTest, CountsWhatHappenedByItsKindAndLevel ) {
   Events events( file_, []( const auto & ) { return true; } );
   EXPECT_TRUE( events.counts().empty() );
   Health::Event clear = absentSupply;
   clear.what = Health::Event::What::Clear;
   events.add( { absentSupply, absentSupply, clear } );
   events.add( { absentSupply } );
   EXPECT_EQ( events.counts(),
              ( EventCounts{ { { Health::Event::What::Set, Health::Level::Critical }, 3 },
                             { { Health::Event::What::Clear, Health::Level::Critical }, 1 } } ) );
   EXPECT_TRUE( Events( file_ ).counts().empty() ); // those of the journal are not new
}

TEST_F( EventsTest, TheSystemsLogTakesThePlaceOfThePlainLine ) {
   std::vector<uint64_t> told;
   bool takes = true;
   Events events( file_, [&]( const Health::Event &event ) {
      told.push_back( event.id );
      return takes;
   } );
   EXPECT_EQ( logOf( [&] { events.add( { absentSupply } ); } ), "" );
   takes = false;
   EXPECT_THAT( logOf( [&] { events.add( { absentSupply } ); } ), HasSubstr( "psu2-slot absent" ) );
   EXPECT_THAT( told, ElementsAre( 1, 2 ) );
}

TEST_F( EventsTest, AListenerIsToldAsLongAsItExists ) {
   Events events( file_ );
   uint64_t heard = 0;
   auto listener = std::make_shared<Events::Listener>( [&] { heard = events.lastId(); } );
   events.tell( listener );
   logOf( [&] { events.add( { absentSupply, absentSupply } ); } );
   EXPECT_EQ( heard, 2u );
   listener.reset();
   logOf( [&] { events.add( { absentSupply } ); } );
   EXPECT_EQ( heard, 2u );
}

TEST_F( EventsTest, NothingNewTellsNobody ) {
   Events events( file_ );
   bool isHeard = false;
   const auto listener = std::make_shared<Events::Listener>( [&] { isHeard = true; } );
   events.tell( listener );
   events.add( {} );
   EXPECT_FALSE( isHeard );
}

TEST_F( EventsTest, WithoutAFileItGoesOnInMemoryAndSaysSo ) {
   folder_.write( "host.events", std::string( 200, 'x' ) );
   std::optional<Events> events;
   EXPECT_THAT( logOf( [&] { events.emplace( file_ ); } ),
                HasSubstr( "[warning] " + file_.string() +
                           ": this is not a journal of events; events are kept in memory, and are "
                           "lost when serve ends\n" ) );
   logOf( [&] { events->add( { absentSupply } ); } );
   EXPECT_EQ( events->events( {} ).size(), 1u );
}

TEST_F( EventsTest, ADamagedFileIsTold ) {
   Journal::inMemory(); // opens the library before the file is written
   {
      Journal journal( file_ );
      std::vector<Health::Event> some( 200, absentSupply );
      journal.add( some );
   }
   const std::string bytes = folder_.read( "host.events" );
   folder_.write( "host.events", bytes.substr( 0, bytes.size() / 2 ) );
   EXPECT_THAT( logOf( [&] { Events events( file_ ); } ),
                HasSubstr( "[warning] the journal of events is damaged (" ) );
}

// No file may grow: to a program it is as a full disk is.
TEST_F( EventsTest, WhileTheFileCanNotBeWrittenItGoesOnInMemoryWithTheSameIds ) {
   Events events( file_, {}, Clock::duration( 0 ) );
   logOf( [&] { events.add( { absentSupply } ); } );
   rlimit before{};
   ::getrlimit( RLIMIT_FSIZE, &before );
   const rlimit none{ .rlim_cur = 0, .rlim_max = before.rlim_max };
   std::signal( SIGXFSZ, SIG_IGN );
   std::vector<Health::Event> all;
   Health::Event second = absentSupply;
   second.cause = "second";
   ::testing::internal::CaptureStdout();
   ::setrlimit( RLIMIT_FSIZE, &none );
   events.add( { second } );
   ::setrlimit( RLIMIT_FSIZE, &before );
   std::signal( SIGXFSZ, SIG_DFL );
   ::testing::internal::GetCapturedStdout(); // a file, too
   all = events.events( {} );
   ASSERT_EQ( all.size(), 2u );
   EXPECT_EQ( all[0].id, 1u );
   EXPECT_EQ( all[1].id, 2u );
   EXPECT_EQ( all[1].cause, "second" );
   EXPECT_THAT( logOf( [&] { events.add( { absentSupply } ); } ),
                HasSubstr( "the events are kept in " + file_.string() + " again\n" ) );
   EXPECT_EQ( events.events( {} ).size(), 3u );
   const auto kept = Journal::toRead( file_ ).events( {} );
   ASSERT_EQ( kept.size(), 3u );
   EXPECT_EQ( kept[1], all[1] );
   EXPECT_EQ( kept[2].id, 3u );
}

TEST_F( EventsTest, AFileThatCanBeUsedLaterGetsTheEventsOfBefore ) {
   folder_.write( "host.events", std::string( 200, 'x' ) );
   std::optional<Events> events;
   logOf( [&] {
      events.emplace( file_, Events::SystemLog(), Clock::duration( 0 ) );
      events->add( { absentSupply } );
   } );
   EXPECT_EQ( folder_.read( "host.events" ), std::string( 200, 'x' ) );
   folder_.remove( "host.events" );
   logOf( [&] { events->add( { absentSupply } ); } );
   EXPECT_EQ( Journal::toRead( file_ ).events( {} ).size(), 2u );
}

TEST_F( EventsTest, AFileThatCanNotBeUsedIsTriedOnceAMinute ) {
   folder_.write( "host.events", std::string( 200, 'x' ) );
   std::optional<Events> events;
   logOf( [&] {
      events.emplace( file_ );
      folder_.remove( "host.events" );
      events->add( { absentSupply } );
   } );
   EXPECT_FALSE( std::filesystem::exists( file_ ) );
}

TEST_F( EventsTest, ACauseIsAcknowledgedByWhoKnowsIt ) {
   Events events( file_ );
   EXPECT_FALSE( events.acknowledge( "psu2-slot absent" ) );
   events.acknowledgeWith( []( const std::string &cause ) { return cause == "psu2-slot absent"; } );
   EXPECT_TRUE( events.acknowledge( "psu2-slot absent" ) );
   EXPECT_FALSE( events.acknowledge( "fan1 absent" ) );
}

TEST( EventTextTest, ALongListIsCountedWhereThereIsNoRoom ) {
   EXPECT_EQ( textOf( absentSupply ), "psu2-slot absent: no module; explains psu2, psu2-fan1" );
   EXPECT_EQ( textOf( absentSupply, 53 ), "psu2-slot absent: no module; explains psu2, psu2-fan1" );
   EXPECT_EQ( textOf( absentSupply, 52 ), "psu2-slot absent: no module; explains psu2 and 1 more" );
   Health::Event many = absentSupply;
   many.explains.assign( 30, "psu" );
   EXPECT_EQ( textOf( many, 70 ),
              "psu2-slot absent: no module; explains psu, psu, psu, psu and 26 more" );
   EXPECT_EQ( textOf( many, 5 ), "psu2-slot absent: no module; explains psu and 29 more" );
   EXPECT_EQ( textOf( { .cause = "bus held" } ), "bus held" );
}

TEST( EventTextTest, ItsKindIsTheLevelOrThatItIsOver ) {
   EXPECT_EQ( kindOf( absentSupply ), "critical" );
   EXPECT_EQ( kindOf( { .what = Health::Event::What::Clear } ), "clear" );
   EXPECT_EQ( kindOf( { .what = Health::Event::What::Acknowledged } ), "acknowledged" );
}

} // namespace
} // namespace Host
