#include "host/journal/EventJson.h"

#include <cmath>
#include <gmock/gmock.h>

namespace Host {
namespace {

using namespace std::chrono_literals;

const Health::Event wholeEvent{ .id = 12,
                                .time = Health::WallTime( 1'500ms ),
                                .what = Health::Event::What::Set,
                                .cause = "cpu temperature high",
                                .object = "cpu",
                                .value = "temperature",
                                .level = Health::Level::Critical,
                                .words = "120 °C is above the critical limit of 100 °C",
                                .number = 120,
                                .limit = 100,
                                .unit = "°C",
                                .explains = { "fan1", "fan2" } };

TEST( EventJsonTest, AnEventIsOneLine ) {
   EXPECT_EQ( toJson( wholeEvent ),
              R"({"id":12,"time":"1970-01-01T00:00:01.500Z","what":"set",)"
              R"("cause":"cpu temperature high","object":"cpu","value":"temperature",)"
              R"("level":"critical","words":"120 °C is above the critical limit of 100 °C",)"
              R"("number":120.0,"limit":100.0,"unit":"°C","explains":["fan1","fan2"]})" );
}

TEST( EventJsonTest, WhatIsEmptyIsLeftOut ) {
   EXPECT_EQ( toJson( { .what = Health::Event::What::Clear, .cause = "bus held", .number = NAN } ),
              R"({"time":"1970-01-01T00:00:00.000Z","what":"clear","cause":"bus held",)"
              R"("level":"warning","words":""})" );
}

TEST( EventJsonTest, WhatIsWrittenIsReadBack ) {
   EXPECT_EQ( readEvent( toJson( wholeEvent ) ), wholeEvent );
   for ( const auto what : { Health::Event::What::Set, Health::Event::What::Clear,
                             Health::Event::What::Acknowledged } )
      for ( const auto level : { Health::Level::Ok, Health::Level::Warning, Health::Level::Critical,
                                 Health::Level::Indeterminate } ) {
         const Health::Event event{ .what = what, .cause = "\"x\"\n", .level = level };
         EXPECT_EQ( readEvent( toJson( event ) ), event );
      }
}

TEST( EventJsonTest, AnythingElseIsNoEvent ) {
   for ( const char *text :
         { "", "{}", "[]", "5",
           R"({"time":"1970-01-01T00:00:00.000Z","what":"set","level":"warning"})",
           R"({"time":"now","what":"set","cause":"x","level":"warning"})",
           R"({"time":"1970-01-01T00:00:00.000Z","what":"put","cause":"x","level":"warning"})" } )
      EXPECT_FALSE( readEvent( text ) ) << text;
}

} // namespace
} // namespace Host
