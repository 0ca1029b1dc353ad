#include "host/serve/Api.h"
#include "host/JsonReader.h"

#include "PrivateFolder.h"
#include "host/serve/Events.h"
#include "host/serve/HistoryApi.h"
#include "host/serve/WhyJson.h"
#include "support/StateSchema.h"

#include <gmock/gmock.h>
#include <rapidjson/document.h>
#include <rapidjson/pointer.h>
#include <rapidjson/schema.h>
#include <regex>

namespace Host {
namespace {

using ::testing::HasSubstr;

// An Api with two objects, compared with docs/openapi.json.
class ApiTest : public ::testing::Test {
 protected:
   ApiTest() { EXPECT_FALSE( document_.HasParseError() ); }

   // Sends a request.
   Http::Response ask( const std::string &method, const std::string &path,
                       const std::string &body = "", const std::string &query = "" ) {
      Http::Response answer{ .status = 0 };
      api_.handle( { .method = method, .path = path, .body = body, .query = query },
                   [&]( const Http::Response &response ) { answer = response; } );
      return answer;
   }
   // Sends a request, and checks that the document knows its path, method and status, and that the
   // answer fits the document's schema.
   Http::Response documented( const std::string &method, const std::string &path,
                              const std::string &body, const std::string &documentedPath,
                              const std::string &query = "" ) {
      const Http::Response answer = ask( method, path, body, query );
      const std::string lower = method == "GET" ? "get" : "post";
      const rapidjson::Value *response =
         at( { "paths", documentedPath, lower, "responses", std::to_string( answer.status ) } );
      EXPECT_NE( response, nullptr ) << documentedPath << ' ' << answer.status;
      if ( response && response->HasMember( "$ref" ) ) {
         EXPECT_EQ( schemaFault( answer.body, ( *response )["$ref"].GetString() ), "" )
            << answer.body;
      }
      return answer;
   }

   const rapidjson::Value *at( const std::vector<std::string> &keys ) const {
      rapidjson::Pointer pointer;
      for ( const std::string &key : keys )
         pointer = pointer.Append( key.c_str(), static_cast<rapidjson::SizeType>( key.size() ) );
      return pointer.Get( document_ );
   }

   // Where an answer doesn't fit the schema of "#/components/responses/NAME".
   std::string schemaFault( const std::string &json, const std::string &reference ) const {
      const std::string name = reference.substr( reference.rfind( '/' ) + 1 );
      const rapidjson::Value *schema = at( { "components", "schemas", name } );
      rapidjson::Document document;
      if ( !schema || document.Parse( json.c_str() ).HasParseError() )
         return "no schema, or no JSON";
      const rapidjson::SchemaDocument compiled( *schema );
      rapidjson::SchemaValidator validator( compiled );
      return document.Accept( validator ) ? "" : validator.GetInvalidSchemaKeyword();
   }

   struct NoStream : Http::Stream {
      void start( std::function<void()> ) override {}
      std::string next() override { return ""; }
   };

   const TestSupport::PrivateFolder folder_;
   const BoardFiles::Board board_{ .topology = "[ 5 ]",
                                   .objects = { { .kind = BoardFiles::Kind::Led, .name = "led" },
                                                { .kind = BoardFiles::Kind::Psu, .name = "psu" } },
                                   .panel = { { .name = "front",
                                                .width = 440,
                                                .height = 88,
                                                .places = { { "led", 8, 10, 5.5, 5 } } } } };
   Action asked_;
   Reading result_{ .name = "set_light_setting" };
   std::string busses_, whyNoBusses_, fault_;
   History::Store history_;
   HealthReport health_;
   Why why_;
   std::vector<CageModule> modules_{ { .cage = "qsfp1" },
                                     { .cage = "qsfp2", .state = State::Absent } };
   const ObjectReport led_{ .name = "led", .type = "led" };
   ObjectReport psu_{ .name = "psu", .type = "psu" };
   Events events_{ folder_.file( "host.events" ), []( const auto & ) { return true; } };
   const Api api_{ board_,
                   "/b",
                   { .report =
                        [this] {
                           return BoardReport{ led_, psu_ };
                        },
                     .object = [this]( size_t object ) { return object == 1 ? psu_ : led_; },
                     .health = [this] { return health_; },
                     .modules = [this] { return modules_; },
                     .why = [this]( size_t, const auto &ready ) { ready( why_ ); },
                     .ask =
                        [this]( size_t, const Action &action, const auto &answer ) {
                           asked_ = action;
                           answer( result_ );
                        },
                     .busses = [this]( const auto &answer ) { answer( busses_, whyNoBusses_ ); },
                     .metrics =
                        []( Metrics::Format format, const auto &answer ) {
                           answer( format == Metrics::Format::Text ? "text\n" : "# EOF\n" );
                        },
                     .live = [] { return std::make_shared<NoStream>(); },
                     .fault = [this] { return fault_; },
                     .events = &events_,
                     .history = &history_ } };
   const rapidjson::Document document_ = parsedFile( DOCS "/openapi.json" );
};

TEST_F( ApiTest, GivesTheBoardByItsSchema ) {
   const auto answer = documented( "GET", "/v1/board", "", "/v1/board" );
   EXPECT_EQ( answer.status, 200u );
   EXPECT_EQ( stateSchemaFault( answer.body ), "" );
   EXPECT_THAT( answer.body, HasSubstr( R"({"board":"/b","objects":[{"name":"led")" ) );
}

TEST_F( ApiTest, GivesOneObjectAndTheTopology ) {
   const auto object = documented( "GET", "/v1/objects/psu", "", "/v1/objects/{name}" );
   EXPECT_THAT( object.body, HasSubstr( R"({"name":"psu","type":"psu","state":"ok")" ) );
   EXPECT_EQ( documented( "GET", "/v1/topology", "", "/v1/topology" ).body, "[ 5 ]" );
}

TEST_F( ApiTest, GivesTheLastReadingsOfOneObject ) {
   const Health::WallTime time( std::chrono::seconds( 1 ) );
   psu_.values = { { { .name = "temperature", .unit = "°C", .value = 25.5 } } };
   psu_.health =
      Health::ObjectHealth{ .values = { { .last = { { 24.5, time }, { 25.5, time } } } } };
   const auto answer = documented( "GET", "/v1/objects/psu", "", "/v1/objects/{name}" );
   EXPECT_THAT(
      answer.body,
      HasSubstr( R"("last":[{"value":24.5,"at":"1970-01-01T00:00:01.000Z"},{"value":25.5)" ) );
   const auto board = readBoard( R"({"board":"b","objects":[)" + answer.body + "]}" );
   ASSERT_TRUE( board );
   ASSERT_EQ( board->objects[0].health->values[0].last.size(), 2u );
   EXPECT_EQ( board->objects[0].health->values[0].last[1].number, 25.5 );
   EXPECT_EQ( stateSchemaFault( R"({"board":"b","objects":[)" + answer.body + "]}" ), "" );
}

TEST_F( ApiTest, GivesTheMetricsInTheFormatThatTheClientLikesBest ) {
   const auto text = documented( "GET", "/metrics", "", "/metrics" );
   EXPECT_EQ( text.body, "text\n" );
   EXPECT_EQ( text.contentType, "text/plain; version=0.0.4; charset=utf-8" );
   Http::Response open;
   api_.handle( { .method = "GET",
                  .path = "/metrics",
                  .accept = "application/openmetrics-text;version=1.0.0,text/plain;q=0.5" },
                [&open]( const Http::Response &response ) { open = response; } );
   EXPECT_EQ( open.body, "# EOF\n" );
   EXPECT_EQ( open.contentType, "application/openmetrics-text; version=1.0.0; charset=utf-8" );
   EXPECT_EQ( ask( "POST", "/metrics" ).status, 405u );
}

TEST_F( ApiTest, GivesTheLoadsOfTheServersBussesOrWhyThereAreNone ) {
   busses_ = "{\"busses\":[]}";
   EXPECT_EQ( documented( "GET", "/v1/busses", "", "/v1/busses" ).body, busses_ );
   whyNoBusses_ = "no answer in time";
   const auto none = documented( "GET", "/v1/busses", "", "/v1/busses" );
   EXPECT_EQ( none.status, 503u );
   EXPECT_EQ( none.body, R"({"error":"no answer in time"})" );
   EXPECT_EQ( ask( "POST", "/v1/busses" ).allow, "GET" );
}

TEST_F( ApiTest, TellsWhatIsWrongByItsSchema ) {
   health_ = { .level = Health::Level::Critical,
               .causes = { { .key = "psu input lost",
                             .object = "psu",
                             .level = Health::Level::Critical,
                             .words = "input undervoltage",
                             .explains = { "psu-fan1" } } },
               .objects = 2,
               .good = 1 };
   const auto answer = documented( "GET", "/v1/health", "", "/v1/health" );
   EXPECT_EQ( ::schemaFault( answer.body, "health" ), "" );
   EXPECT_THAT( answer.body, HasSubstr( R"("level":"critical","objects":2,"good":1,"absent":0)" ) );
   EXPECT_EQ( ask( "POST", "/v1/health" ).allow, "GET" );
   const auto read = readHealth( answer.body );
   ASSERT_TRUE( read );
   EXPECT_EQ( read->causes[0].key, "psu input lost" );
   EXPECT_EQ( read->causes[0].explains, health_.causes[0].explains );
   EXPECT_EQ( read->level, Health::Level::Critical );
}

TEST_F( ApiTest, TellsAllOfOneObjectByItsSchema ) {
   const BoardFiles::ChipPlace place{ "scd(4):1:2", "0x70=1", 0x58 };
   const Health::WallTime time( std::chrono::seconds( 1 ) );
   why_ = { .board = "/b",
            .object = psu_,
            .chips = { place },
            .driver = "Pmbus",
            .did = 21,
            .on = { "psu-slot" },
            .chain = { { "psu", Health::Level::Critical, "unreadable" } },
            .causes = { { .key = "psu input lost", .words = "input undervoltage" } },
            .neighbours = { { place, { "psu", "psu-fan1" }, false }, { {}, { "led" }, {} } },
            .transfers = { { place, 1.5, "read of 1 byte", "00", "" },
                           { place, 0.5, "read of 1 byte", "", "no acknowledge" } },
            .whyNoTransfers = "no answer in time",
            .leftAlone = { "i2c:1: the bus is quarantined" },
            .events = { { .id = 7, .time = time, .cause = "psu input lost", .words = "lost" } } };
   const auto answer = documented( "GET", "/v1/objects/psu/why", "", "/v1/objects/{name}/why" );
   EXPECT_EQ( answer.status, 200u );
   EXPECT_EQ( ::schemaFault( answer.body, "why" ), "" );
   EXPECT_EQ( documented( "GET", "/v1/objects/no/why", "", "/v1/objects/{name}/why" ).status,
              404u );
   EXPECT_EQ( ask( "POST", "/v1/objects/psu/why" ).allow, "GET" );
   const auto read = readWhy( answer.body );
   ASSERT_TRUE( read );
   EXPECT_EQ( toJson( *read ), answer.body ); // nothing got lost
   why_.registers = { { place, "psu-status", "", { { { 0x79, 2, "STATUS_WORD" }, 0x2848, "" } } },
                      { place, "", "none", {} } };
   EXPECT_EQ( ::schemaFault( toJson( why_ ), "why" ), "" );
}

TEST_F( ApiTest, GivesTheModulesOfAllCagesOrOfOneByTheirSchema ) {
   const auto all = documented( "GET", "/v1/modules", "", "/v1/modules" );
   EXPECT_EQ( ::schemaFault( all.body, "modules" ), "" );
   EXPECT_THAT( all.body, HasSubstr( R"({"board":"/b","modules":[{"cage":"qsfp1")" ) );
   const auto one = documented( "GET", "/v1/modules/qsfp2", "", "/v1/modules/{cage}" );
   EXPECT_THAT( one.body, HasSubstr( R"({"cage":"qsfp2","state":"absent")" ) );
   const auto none = documented( "GET", "/v1/modules/qsfp3", "", "/v1/modules/{cage}" );
   EXPECT_EQ( none.status, 404u );
   EXPECT_EQ( none.body, R"({"error":"the board has no cage \"qsfp3\" with a \"module\""})" );
   EXPECT_EQ( ask( "POST", "/v1/modules" ).allow, "GET" );
   EXPECT_EQ( ask( "POST", "/v1/modules/qsfp2" ).allow, "GET" );
}

TEST_F( ApiTest, GivesTheEventsInTheOrderOfTime ) {
   using std::chrono::sys_days;
   const Health::WallTime day = sys_days( std::chrono::year( 2026 ) / 11 / 22 );
   for ( int i = 0; i < 4; ++i )
      events_.add( { { .time = day + std::chrono::hours( i ),
                       .cause = "cause",
                       .object = i == 2 ? "psu" : "led",
                       .number = 2.5,
                       .explains = { "led" } } } );
   const auto idsOf = [this]( const std::string &query ) {
      const auto answer = documented( "GET", "/v1/events", "", "/v1/events", query );
      rapidjson::Document json;
      json.Parse( answer.body.c_str() );
      std::string ids;
      for ( const auto &event : json["events"].GetArray() )
         ids += std::to_string( event["id"].GetInt() );
      return ids;
   };
   EXPECT_EQ( idsOf( "" ), "1234" );
   EXPECT_EQ( idsOf( "limit=2" ), "34" );         // the newest
   EXPECT_EQ( idsOf( "since=1&limit=2" ), "23" ); // what comes behind it
   EXPECT_EQ( idsOf( "since=2026-11-22T02%3A00:00.000Z" ), "34" );
   EXPECT_EQ( idsOf( "object=psu" ), "3" );
   EXPECT_EQ( idsOf( "object=led&since=3" ), "4" );
   EXPECT_EQ( idsOf( "since=4" ), "" );
   EXPECT_THAT(
      ask( "GET", "/v1/events" ).body,
      HasSubstr( R"({"events":[{"id":1,"time":"2026-11-22T00:00:00.000Z","what":"set",)" ) );
}

TEST_F( ApiTest, SaysWhatIsWrongInAQueryForEvents ) {
   const auto errorOf = [this]( const std::string &query ) {
      const auto answer = documented( "GET", "/v1/events", "", "/v1/events", query );
      EXPECT_EQ( answer.status, 400u ) << query;
      return answer.body;
   };
   EXPECT_THAT( errorOf( "since=soon" ), HasSubstr( R"(since is \"soon\"; it must be \"2026-)" ) );
   for ( const char *limit : { "limit=0", "limit=10001", "limit=", "limit=-1", "limit=5x" } )
      EXPECT_THAT( errorOf( limit ), HasSubstr( "it must be from 1 to 10000" ) );
   EXPECT_THAT( errorOf( "object=fan" ), HasSubstr( R"(the board has no object \"fan\")" ) );
   EXPECT_THAT( errorOf( "until=1" ), HasSubstr( "known are since, object and limit" ) );
   EXPECT_THAT( errorOf( "since=%" ), HasSubstr( "two hexadecimal digits" ) );
}

TEST_F( ApiTest, TellsWhetherTheBoardIsRead ) {
   EXPECT_EQ( documented( "GET", "/healthz", "", "/healthz" ).body, R"({"status":"ok"})" );
   fault_ = "the plug-in can't be loaded";
   const auto answer = documented( "GET", "/healthz", "", "/healthz" );
   EXPECT_EQ( answer.status, 503u );
   EXPECT_EQ( answer.body, R"({"status":"fault","fault":"the plug-in can't be loaded"})" );
}

TEST_F( ApiTest, ListsTheObjectsWithoutTheirValues ) {
   psu_.values = { { .reading = { .name = "output_voltage", .unit = "V", .value = 12.0 } } };
   psu_.health = { .level = Health::Level::Critical, .cause = "psu input lost" };
   const auto answer = documented( "GET", "/v1/objects", "", "/v1/objects" );
   EXPECT_THAT( answer.body, HasSubstr( R"({"name":"led","type":"led","state":"ok")" ) );
   EXPECT_THAT( answer.body, HasSubstr( R"("level":"critical","cause":"psu input lost")" ) );
   EXPECT_THAT( answer.body, ::testing::Not( HasSubstr( "output_voltage" ) ) );
}

TEST_F( ApiTest, TellsWhereTheObjectsAreOnTheBox ) {
   EXPECT_EQ( documented( "GET", "/v1/panel", "", "/v1/panel" ).body,
              R"({"board":"/b","sides":[{"name":"front","width":440.0,"height":88.0,"places":[)"
              R"({"object":"led","x":8.0,"y":10.0,"width":5.5,"height":5.0}]}]})" );
}

TEST_F( ApiTest, TellsOnceWhatStaysAsItIs ) {
   const auto answer = documented( "GET", "/v1/wiring", "", "/v1/wiring" );
   EXPECT_EQ( answer.status, 200u );
   EXPECT_EQ( ::schemaFault( answer.body, "wiring" ), "" );
}

TEST_F( ApiTest, AStreamTellsAPageWhatIsNew ) {
   EXPECT_NE( ask( "GET", "/v1/live" ).stream, nullptr );
   EXPECT_EQ( ask( "POST", "/v1/live" ).allow, "GET" );
}

TEST_F( ApiTest, GivesThePageAndItsFiles ) {
   EXPECT_EQ( documented( "GET", "/", "", "/" ).contentType, "text/html; charset=utf-8" );
   EXPECT_EQ( documented( "GET", "/panel/panel.css", "", "/panel/{file}" ).contentType,
              "text/css; charset=utf-8" );
   EXPECT_EQ( documented( "GET", "/panel/..", "", "/panel/{file}" ).body,
              R"({"error":"the page has no file \"..\""})" );
   EXPECT_EQ( ask( "POST", "/" ).allow, "GET" );
   EXPECT_EQ( ask( "POST", "/panel/panel.css" ).allow, "GET" );
}

TEST_F( ApiTest, GivesItsOwnDocument ) {
   const auto answer = documented( "GET", "/openapi.json", "", "/openapi.json" );
   rapidjson::Document given;
   given.Parse( answer.body.c_str() );
   EXPECT_EQ( given, document_ );
}

// The numbers of the power supply, from now on backwards.
class HistoryApiTest : public ApiTest {
 protected:
   // A reading of so many seconds ago; without a number, one that failed.
   void was( int secondsAgo, std::optional<double> number ) {
      psu_.values = { { .reading = { .name = "output_voltage",
                                     .unit = "V",
                                     .state = number ? State::Ok : State::Unreadable } } };
      if ( number )
         psu_.values[0].reading.value = *number;
      const std::chrono::seconds ago( secondsAgo );
      history_.add( { led_, psu_ }, { std::chrono::steady_clock::now() - ago,
                                      std::chrono::floor<std::chrono::milliseconds>(
                                         std::chrono::system_clock::now() - ago ) } );
   }
   std::string of( const std::string &query, unsigned status = 200 ) {
      const auto answer = documented( "GET", "/v1/history", "", "/v1/history", query );
      EXPECT_EQ( answer.status, status ) << query;
      return answer.body;
   }
   // Without the times.
   static std::string withoutTimes( const std::string &text ) {
      return std::regex_replace( text, std::regex( "\"?20[0-9T:.-]+Z\"?" ), "T" );
   }
};

TEST_F( HistoryApiTest, GivesTheReadingsOfTheLastHour ) {
   was( 3700, 11 );
   was( 30, 12.02 );
   was( 20, {} );
   was( 10, 12.5 );
   EXPECT_EQ( withoutTimes( of( "object=psu" ) ),
              R"({"object":"psu","values":[{"name":"output_voltage","unit":"V",)"
              R"("readings":[[T,12.02],[T,null],[T,12.5]]}]})" );
   EXPECT_THAT( of( "object=psu&since=15s" ), HasSubstr( R"(Z",12.5]]}]})" ) );
   EXPECT_EQ( of( "object=led" ), R"({"object":"led","values":[]})" );
}

TEST_F( HistoryApiTest, GivesMinutesOfALongerTime ) {
   was( 7200, 11 );
   was( 3661, 12 );
   EXPECT_EQ( withoutTimes( of( "object=psu&since=3h" ) ),
              R"({"object":"psu","values":[{"name":"output_voltage","unit":"V",)"
              R"("minutes":[[T,11.0,11.0],[T,12.0,12.0]]}]})" );
   EXPECT_THAT( of( "object=psu&since=3h&step=reading" ), HasSubstr( R"("readings":[["20)" ) );
}

TEST_F( HistoryApiTest, GivesTheSameForATable ) {
   was( 30, 12.02 );
   was( 20, {} );
   EXPECT_EQ( withoutTimes( of( "object=psu&format=csv&value=output_voltage" ) ),
              "time,value,unit,number\nT,output_voltage,V,12.02\nT,output_voltage,V,\n" );
   EXPECT_EQ( withoutTimes( of( "object=psu&format=csv&step=minute" ) ),
              "time,value,unit,lowest,highest\nT,output_voltage,V,12.02,12.02\n" );
   for ( const char *accept : { "text/csv", "text/csv, */*;q=0.1" } )
      EXPECT_EQ(
         answerHistory( { .query = "object=psu", .accept = accept }, board_, history_ ).contentType,
         "text/csv; charset=utf-8" );
}

TEST_F( HistoryApiTest, SaysWhatIsWrongInItsQuery ) {
   EXPECT_THAT( of( "", 400 ), HasSubstr( "/v1/history?object=NAME" ) );
   EXPECT_THAT( of( "object=fan", 400 ), HasSubstr( R"(the board has no object \"fan\")" ) );
   EXPECT_THAT( of( "object=psu&since=5", 400 ), HasSubstr( R"(since is \"5\"; it must be)" ) );
   EXPECT_THAT( of( "object=psu&step=hour", 400 ), HasSubstr( "it must be reading or minute" ) );
   EXPECT_THAT( of( "object=psu&format=xml", 400 ), HasSubstr( "it must be json or csv" ) );
   EXPECT_THAT( of( "object=psu&to=1h", 400 ), HasSubstr( "known are object, value, since" ) );
   EXPECT_THAT( of( "object=psu&since=%", 400 ), HasSubstr( "two hexadecimal digits" ) );
   EXPECT_THAT( of( "object=psu&value=colour", 404 ), HasSubstr( R"(a number \"colour\")" ) );
}

TEST_F( ApiTest, AStreamBeginsWhereTheClientSays ) {
   const auto now =
      std::chrono::floor<std::chrono::milliseconds>( std::chrono::system_clock::now() );
   events_.add( { { .time = now }, { .time = now }, { .time = now } } );
   const auto start = [this]( const std::string &query, const std::string &lastEventId ) {
      Http::Response answer;
      api_.handle( { .method = "GET",
                     .path = "/v1/events",
                     .query = query,
                     .accept = "text/event-stream",
                     .lastEventId = lastEventId },
                   [&]( const Http::Response &response ) { answer = response; } );
      return answer.stream ? answer.stream->next().substr( 0, 5 ) : answer.body;
   };
   EXPECT_EQ( start( "", "" ), "" ); // only what comes
   EXPECT_EQ( start( "", "2" ), "id: 3" );
   EXPECT_EQ( start( "since=1", "2" ), "id: 3" );
   EXPECT_EQ( start( "since=1", "" ), "id: 2" );
   EXPECT_EQ( start( "since=2h", "" ), "id: 1" );
   EXPECT_EQ( start( "", "4" ), "id: 1" ); // the journal that had it is gone
   EXPECT_THAT( start( "", "x" ), HasSubstr( "Last-Event-ID is" ) );
   EXPECT_THAT( start( "since=x", "" ), HasSubstr( "since is" ) );
}

TEST_F( ApiTest, ACauseIsAcknowledged ) {
   std::string seen;
   events_.acknowledgeWith( [&seen]( const std::string &cause ) {
      seen = cause;
      return cause == "psu absent";
   } );
   const auto post = [this]( const char *body ) {
      return documented( "POST", "/v1/acknowledge", body, "/v1/acknowledge" );
   };
   EXPECT_EQ( post( R"({"cause":"psu absent"})" ).body, R"({"state":"ok"})" );
   EXPECT_EQ( seen, "psu absent" );
   const auto unknown = post( R"({"cause":"led absent"})" );
   EXPECT_EQ( unknown.status, 404u );
   EXPECT_EQ( unknown.body, R"({"error":"there is no cause \"led absent\" now"})" );
   for ( const char *body : { "", "{}", R"({"cause":5})", R"({"cause":"a","more":1})" } )
      EXPECT_EQ( post( body ).status, 400u ) << body;
   EXPECT_EQ( ask( "GET", "/v1/acknowledge" ).allow, "POST" );
   EXPECT_EQ( ask( "POST", "/v1/events" ).allow, "GET" );
}

TEST_F( ApiTest, HasAnObjectDoWhatTheWordsSay ) {
   const auto act = [this]( const char *body ) {
      return documented( "POST", "/v1/objects/led/action", body, "/v1/objects/{name}/action" );
   };
   EXPECT_EQ( act( R"({"words":["bad"]})" ).body, R"({"state":"ok"})" );
   EXPECT_EQ( asked_, ( Action{ "set_light_setting", { 3 } } ) );
   result_.value = std::string( "0x05" );
   EXPECT_EQ( act( R"({"words":["off"]})" ).body, R"({"state":"ok","value":"0x05"})" );
   result_ = { .state = State::Unsupported, .fault = { 3, "" } };
   EXPECT_EQ( act( R"({"words":["inactive"]})" ).status, 501u );
   result_ = { .state = State::Unreadable, .fault = { 6, "nack" } };
   const auto failed = act( R"({"words":["off"]})" );
   EXPECT_EQ( failed.status, 502u );
   EXPECT_EQ( failed.body, R"({"state":"unreadable","status":6,"fault":"nack"})" );
}

TEST_F( ApiTest, RefusesBodiesThatMakeNoSense ) {
   for ( const char *body : { "", "{", "[]", "{}", R"({"words":"off"})", R"({"words":[5]})",
                              R"({"words":["off"],"more":1})", R"({"words":["green"]})" } )
      EXPECT_EQ(
         documented( "POST", "/v1/objects/led/action", body, "/v1/objects/{name}/action" ).status,
         400u )
         << body;
   EXPECT_EQ( ask( "POST", "/v1/objects/led/action", std::string( 30000, '[' ) ).status, 400u );
   EXPECT_EQ( asked_, Action() );
}

TEST_F( ApiTest, NamesWhatIsMissingAndTheMethodOfAPath ) {
   for ( const char *path : { "", "/v1", "/panel", "/panel/x.js", "/v1/objects/", "/v1/objects/x",
                              "/v1/objects/led/x", "/v1/boards", "/v1/objects/x/action" } )
      EXPECT_EQ( ask( "GET", path ).status, 404u ) << path;
   EXPECT_EQ( ask( "POST", "/v1/board" ).allow, "GET" );
   EXPECT_EQ( ask( "DELETE", "/v1/objects/led" ).status, 405u );
   EXPECT_EQ( ask( "GET", "/v1/objects/led/action" ).allow, "POST" );
}

TEST_F( ApiTest, IsDocumentedPathByPath ) {
   events_.acknowledgeWith( []( const auto & ) { return true; } );
   const rapidjson::Value *paths = at( { "paths" } );
   ASSERT_NE( paths, nullptr );
   for ( const auto &[path, item] : paths->GetObject() ) {
      std::string real = path.GetString();
      if ( const auto place = real.find( "{name}" ); place != std::string::npos )
         real.replace( place, 6, "led" );
      if ( const auto place = real.find( "{cage}" ); place != std::string::npos )
         real.replace( place, 6, "qsfp2" );
      if ( const auto place = real.find( "{file}" ); place != std::string::npos )
         real.replace( place, 6, "main.js" );
      const bool isPost = item.HasMember( "post" );
      const std::string body =
         path == "/v1/acknowledge" ? R"({"cause":"x"})" : R"({"words":["off"]})";
      EXPECT_NE( ask( isPost ? "POST" : "GET", real, body ).status, 404u ) << real;
      EXPECT_EQ( ask( isPost ? "GET" : "POST", real ).status, 405u ) << real;
   }
   EXPECT_EQ( paths->MemberCount(), 21u );
}

} // namespace
} // namespace Host
