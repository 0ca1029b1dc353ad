// What the pages of a board are told. The test is the clock: each tick() is a second.
#include "host/serve/LiveBoard.h"

#include "host/session/ObjectRecord.h"
#include "smbus/Control.pb.h"
#include "support/StateSchema.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace Host {
namespace {

using ::testing::EndsWith;
using ::testing::StartsWith;

class LiveBoardTest : public ::testing::Test {
 protected:
   static ObjectReport object( const std::string &name, const Scalar &value ) {
      return { .name = name,
               .type = "temp_sensor",
               .age = 7,
               .values = { { { .name = "temperature", .unit = "°C", .value = value }, 0.25 } },
               .health = Health::ObjectHealth{
                  .values = { { .level = Health::Level::Ok,
                                .changes = 3,
                                .limits = BoardFiles::ValueLimits{ .highWarning = 60 },
                                .lowest = Health::Extreme{ 20, {} } } } } };
   }
   void happens( const std::string &cause ) {
      events_.push_back( { .id = events_.size() + 1, .cause = cause } );
   }
   std::vector<Health::Event> eventsOf( const Journal::Query &query ) {
      ++questions_;
      EXPECT_TRUE( query.newestFirst );
      std::vector<Health::Event> found;
      for ( auto event = events_.rbegin(); event != events_.rend(); ++event )
         if ( event->id > query.after && found.size() < query.limit )
            found.push_back( *event );
      return found;
   }
   static SmbusControl::Response loads( double seconds, uint64_t wire_ns ) {
      SmbusControl::Response response;
      response.set_seconds( seconds );
      SmbusControl::BusLoad *bus = response.add_bus();
      bus->set_bus( "scd(4):1:2" );
      bus->set_wires( true );
      bus->set_clock( 100000 );
      bus->mutable_totals()->set_wire_ns( wire_ns );
      return response;
   }

   // The JSON of an event that a page gets.
   static std::string dataOf( const std::string &text, const std::string &name ) {
      const std::string begin = "event: " + name + "\ndata: ";
      const size_t at = text.find( begin );
      EXPECT_NE( at, std::string::npos ) << text;
      EXPECT_THAT( text, EndsWith( "}\n\n" ) );
      EXPECT_EQ( text.find( '\n', at + begin.size() ), text.size() - 2 ) << "one line of data";
      const std::string json = text.substr( at + begin.size() );
      EXPECT_EQ( schemaFault( json, "live" ), "" ) << json;
      return json;
   }
   static std::string member( const std::string &json, const char *name ) {
      rapidjson::Document document;
      document.Parse( json.c_str() );
      if ( !document.IsObject() || !document.HasMember( name ) )
         return "none";
      rapidjson::StringBuffer text;
      rapidjson::Writer<rapidjson::StringBuffer> writer( text );
      document[name].Accept( writer );
      return text.GetString();
   }
   // A page, and what it gets when it asks.
   class Page {
    public:
      explicit Page( LiveBoard &board ) : stream_( liveStreamOf( board ) ) {
         stream_->start( [this] { ++told_; } );
      }
      std::string next() { return stream_->next(); }
      std::string all() { return dataOf( next(), "all" ); }
      std::string news() { return dataOf( next(), "news" ); }
      int told() const { return told_; }

    private:
      std::shared_ptr<Http::Stream> stream_;
      int told_ = 0;
   };

   BoardReport report_{ object( "front", 24.5 ), object( "rear", 31.0 ) };
   std::vector<Health::Cause> causes_;
   std::vector<Health::Event> events_;
   std::string fault_;
   Health::Level level_ = Health::Level::Ok;
   std::vector<ServerAccounts::LoadsAnswer> questionsOfBusses_;
   int looks_ = 0;
   int questions_ = 0; // for events
   LiveBoard board_{
      "/b",
      { .report =
           [this] {
              ++looks_;
              return report_;
           },
        .level = [this] { return level_; },
        .causes = [this] { return causes_; },
        .fault = [this] { return fault_; },
        .events = [this]( const auto &query ) { return eventsOf( query ); },
        .lastEvent = [this] { return events_.size(); },
        .askLoads = [this]( auto answer ) { questionsOfBusses_.push_back( std::move( answer ) ); },
        .canAct = true }
   };
};

TEST_F( LiveBoardTest, APageIsToldAllAtFirst ) {
   happens( "rear hot" );
   causes_ = { { .key = "rear hot", .object = "rear", .words = "it is hot" } };
   level_ = Health::Level::Warning;
   fault_ = "it has ended";
   Page page( board_ );
   const std::string json = page.all();
   EXPECT_EQ( member( json, "board" ), "\"/b\"" );
   EXPECT_EQ( member( json, "control" ), "true" );
   EXPECT_EQ( member( json, "fault" ), "\"it has ended\"" );
   EXPECT_EQ( member( json, "level" ), "\"warning\"" );
   EXPECT_THAT( member( json, "objects" ),
                StartsWith( R"([{"name":"front","type":"temp_sensor","state":"ok","level":"ok",)"
                            R"("values":[{"name":"temperature","unit":"°C","state":"ok",)"
                            R"("value":24.5,"level":"ok"}]},{"name":"rear",)" ) );
   EXPECT_EQ( member( json, "ages" ), "[0.3,0.3]" );
   EXPECT_THAT( member( json, "causes" ),
                StartsWith( R"([{"cause":"rear hot","object":"rear",)" ) );
   EXPECT_THAT( member( json, "events" ), ::testing::HasSubstr( R"("cause":"rear hot")" ) );
   EXPECT_EQ( member( json, "busses" ), "[]" );
   EXPECT_EQ( page.next(), "" );
}

TEST_F( LiveBoardTest, OnlyWhatHasChangedIsNews ) {
   Page page( board_ );
   page.all();
   report_[0].values[0].age = 1.25;
   report_[0].health->values[0].changes = 4;
   report_[0].health->values[0].lowest->number = 19;
   EXPECT_TRUE( board_.tick() );
   EXPECT_EQ( page.told(), 1 );
   std::string news = page.news();
   EXPECT_EQ( member( news, "ages" ), "[1.3,0.3]" );
   for ( const char *name : { "objects", "causes", "busses", "bussesFault", "events" } )
      EXPECT_EQ( member( news, name ), "none" ) << name;

   report_[1] = object( "rear", 31.5 );
   causes_ = { { .key = "rear hot" } };
   level_ = Health::Level::Critical;
   happens( "rear hot" );
   board_.tick();
   news = page.news();
   EXPECT_THAT( member( news, "objects" ), StartsWith( R"([{"name":"rear")" ) );
   EXPECT_THAT( member( news, "causes" ), StartsWith( R"([{"cause":"rear hot")" ) );
   EXPECT_THAT( member( news, "events" ), ::testing::HasSubstr( R"("id":1,)" ) );
   EXPECT_EQ( member( news, "level" ), "\"critical\"" );

   causes_.clear();
   board_.tick();
   news = page.news();
   EXPECT_EQ( member( news, "causes" ), "[]" ); // the last one went
   EXPECT_EQ( member( news, "objects" ), "none" );
   EXPECT_EQ( member( news, "events" ), "none" );
}

TEST_F( LiveBoardTest, APageThatIsBehindIsToldAllAnew ) {
   Page slow( board_ );
   Page quick( board_ );
   slow.all();
   quick.all();
   for ( int i = 0; i < 3; ++i ) {
      board_.tick();
      quick.news();
   }
   report_[0] = object( "front", 25.0 );
   board_.tick();
   EXPECT_THAT( member( slow.all(), "objects" ), ::testing::HasSubstr( "25.0" ) );
   board_.tick();
   slow.news();
   EXPECT_EQ( slow.next(), "" );
}

TEST_F( LiveBoardTest, WhatHappensBetweenTwoSecondsIsToldOnceToEachPage ) {
   Page first( board_ );
   first.all();
   board_.tick();
   first.news();
   happens( "rear hot" );
   Page second( board_ ); // between two seconds: as of the last one
   EXPECT_EQ( member( second.all(), "events" ), "[]" );
   board_.tick();
   EXPECT_THAT( member( first.news(), "events" ), ::testing::HasSubstr( "rear hot" ) );
   EXPECT_THAT( member( second.news(), "events" ), ::testing::HasSubstr( "rear hot" ) );
   Page third( board_ );
   EXPECT_THAT( member( third.all(), "events" ), ::testing::HasSubstr( "rear hot" ) );
   board_.tick();
   EXPECT_EQ( member( third.news(), "events" ), "none" );
}

TEST_F( LiveBoardTest, TheLastTwoHundredEventsAreToldOldestFirst ) {
   for ( int i = 1; i <= 250; ++i )
      happens( fmt::format( "event {}", i ) );
   Page page( board_ );
   rapidjson::Document document;
   document.Parse( page.all().c_str() );
   const auto &events = document["events"];
   ASSERT_EQ( events.Size(), 200u );
   EXPECT_EQ( events[0]["id"].GetInt(), 51 );
   EXPECT_EQ( events[199]["id"].GetInt(), 250 );
}

TEST_F( LiveBoardTest, NothingIsDoneWithoutAPage ) {
   EXPECT_FALSE( board_.tick() );
   {
      Page page( board_ );
      page.all();
      EXPECT_TRUE( board_.tick() );
   }
   const int looks = looks_;
   const size_t questionsOfBusses = questionsOfBusses_.size();
   for ( int i = 0; i < 5; ++i )
      EXPECT_FALSE( board_.tick() );
   EXPECT_EQ( looks_, looks );
   EXPECT_EQ( questionsOfBusses_.size(), questionsOfBusses );
   // What changed meanwhile is in what the next page is told.
   report_[0] = object( "front", 25.0 );
   Page page( board_ );
   EXPECT_THAT( member( page.all(), "objects" ), ::testing::HasSubstr( "25.0" ) );
   board_.tick();
   EXPECT_EQ( member( page.news(), "objects" ), "none" );
}

TEST_F( LiveBoardTest, ManyPagesCostOneLookASecond ) {
   std::vector<std::unique_ptr<Page>> pages;
   for ( int i = 0; i < 20; ++i )
      pages.emplace_back( std::make_unique<Page>( board_ ) )->next();
   EXPECT_EQ( looks_, 1 );
   EXPECT_EQ( questions_, 1 );
   board_.tick();
   const std::string news = pages[0]->next();
   for ( int i = 1; i < 20; ++i )
      EXPECT_EQ( pages[static_cast<size_t>( i )]->next(), news );
   EXPECT_EQ( looks_, 2 );
   EXPECT_EQ( questions_, 1 );
}

TEST_F( LiveBoardTest, TheServerIsAskedForItsBussesEveryOtherSecondAndNotTwiceAtATime ) {
   Page page( board_ );
   page.all();
   EXPECT_EQ( questionsOfBusses_.size(), 1u );
   board_.tick();
   board_.tick();
   EXPECT_EQ( questionsOfBusses_.size(), 1u ); // it has not answered yet
   questionsOfBusses_.back()( loads( 100, 4'000'000'000 ), "" );
   for ( int i = 0; i < 4; ++i ) {
      board_.tick();
      if ( questionsOfBusses_.size() == 2 )
         questionsOfBusses_.back()( loads( 102, 5'000'000'000 ), "" );
   }
   EXPECT_EQ( questionsOfBusses_.size(), 3u );
}

TEST_F( LiveBoardTest, BussesAreNewsWhenSomethingOfThemHasChanged ) {
   Page page( board_ );
   page.all();
   questionsOfBusses_.back()( loads( 100, 4'000'000'000 ), "" );
   board_.tick();
   EXPECT_EQ( member( page.news(), "busses" ),
              R"([{"bus":"scd(4):1:2","clock":100000,"load":0.04,"failures":0,"segments":[],)"
              R"("clients":[]}])" );
   board_.tick();
   EXPECT_EQ( member( page.news(), "busses" ), "none" );
   questionsOfBusses_.back()( {}, "no answer in time" );
   board_.tick();
   std::string news = page.news();
   EXPECT_EQ( member( news, "bussesFault" ), R"("no answer in time")" );
   EXPECT_EQ( member( news, "busses" ), "none" ); // what was told stays
   Page other( board_ );
   const std::string all = other.all();
   EXPECT_EQ( member( all, "bussesFault" ), R"("no answer in time")" );
   EXPECT_NE( member( all, "busses" ), "[]" );
   board_.tick();
   questionsOfBusses_.back()( loads( 104, 4'400'000'000 ), "" );
   board_.tick();
   page.all();
   board_.tick();
   page.news();
   EXPECT_EQ( member( other.all(), "bussesFault" ), R"("")" );
}

TEST_F( LiveBoardTest, AnAgeIsThatOfTheLastReadingOrNullWithoutOne ) {
   report_[0].values[0].age = 80;
   report_[0].values.push_back( { { .name = "other" }, 2.04 } );
   report_[1] = { .name = "new",
                  .type = "fan",
                  .state = State::Unreadable,
                  .fault = { {}, notBroughtUp },
                  .age = 3 };
   report_.push_back( { .name = "led", .type = "led", .age = 3 } );
   report_.push_back( { .name = "slot", .type = "slot", .state = State::Absent, .age = 0.96 } );
   Page page( board_ );
   EXPECT_EQ( member( page.all(), "ages" ), "[2.0,null,null,1.0]" );
}

// A module may say anything of itself, and a bus may turn over any bit of it.
TEST_F( LiveBoardTest, WhateverAModuleSaysIsAText ) {
   const std::string vendor = "\"</script><b>\\\n\r\t\x01\x7F\xFF\xC3 \xE2\x80\xA8\n\nevent: all";
   report_[0].values[0].reading.value = vendor;
   report_[0].fault.words = vendor;
   causes_ = { { .key = vendor, .words = vendor } };
   happens( vendor );
   fault_ = vendor;
   Page page( board_ );
   rapidjson::Document document;
   document.Parse<rapidjson::kParseValidateEncodingFlag>( page.all().c_str() );
   ASSERT_FALSE( document.HasParseError() );
   const std::string told = "\"</script><b>\\\n\r\t\x01\x7F\xEF\xBF\xBD\xEF\xBF\xBD "
                            "\xE2\x80\xA8\n\nevent: all";
   const auto &object = document["objects"][0];
   EXPECT_EQ( object["values"][0]["value"].GetString(), told );
   EXPECT_EQ( object["fault"].GetString(), told );
   EXPECT_EQ( document["causes"][0]["words"].GetString(), told );
   EXPECT_EQ( document["events"][0]["cause"].GetString(), told );
   EXPECT_EQ( document["fault"].GetString(), told );
}

} // namespace
} // namespace Host
