#include "host/State.h"
#include "host/JsonWriter.h"
#include "host/terminal/Table.h"
#include "support/StateSchema.h"

#include <gmock/gmock.h>

namespace Host {
namespace {

using ::testing::ElementsAre;

const BoardReport sample{
   { .name = "t",
     .type = "temp_sensor",
     .age = 0.1004,
     .values = { { { "temperature", "°C", State::Ok, 25.0, {} }, 0.1 } } },
   { .name = "supply",
     .type = "psu",
     .values = { { { "output_voltage", "V", State::Unreadable, {}, { 6, "no acknowledge" } }, 12 },
                 { { "power_ok", "", State::Stale, int64_t{ 1 }, {} }, 4 },
                 { { "input_power", "W", State::Unsupported, {}, {} }, 0 } } },
   { .name = "led", .type = "led", .state = State::Unreadable, .fault = { {}, "an assertion" } },
   { .name = "slot",
     .type = "slot",
     .values = { { { "presence", "", State::Absent, {}, { 1, "" } }, 0 } } }
};

TEST( StateTest, IsTheTableOfAllValuesAndOfObjectsWithoutAny ) {
   EXPECT_THAT(
      tableOf( sample ),
      ElementsAre(
         "NAME    TYPE         READING         VALUE    STATE        AGE     FAULT",
         "t       temp_sensor  temperature     25.0 °C  ok           0.1 s   -",
         "supply  psu          output_voltage  -        unreadable   12.0 s  status 6 "
         "(transaction): no acknowledge",
         "supply  psu          power_ok        1        stale        4.0 s   -",
         "supply  psu          input_power     -        unsupported  0.0 s   -",
         "led     led          -               -        unreadable   0.0 s   an assertion",
         "slot    slot         presence        -        absent       0.0 s   status 1 (not "
         "managed)" ) );
}

TEST( StateTest, TellsAStatusByItsNameToo ) {
   EXPECT_EQ( toText( Fault{ 5, "" } ), "status 5 (not provided)" );
   EXPECT_EQ( toText( Fault{ 0, "x" } ), "status 0 (ok): x" );
   EXPECT_EQ( toText( Fault{ 4, "x" } ), "status 4 (socket): x" );
   EXPECT_EQ( toText( Fault{ 7, "x" } ), "status 7: x" );
   EXPECT_EQ( toText( Fault{ -1, "" } ), "status -1" );
   EXPECT_EQ( toText( Fault{ {}, "x" } ), "x" );
}

TEST( StateTest, IsJsonThatFitsItsSchema ) {
   const std::string json = toJson( "b", sample );
   EXPECT_EQ( stateSchemaFault( json ), "" );
   EXPECT_EQ(
      json.substr( 0, json.find( "}]" ) ),
      R"({"board":"b","objects":[{"name":"t","type":"temp_sensor","state":"ok","age":0.1,)"
      R"("values":[{"name":"temperature","unit":"°C","state":"ok","value":25.0,"age":0.1)" );
   EXPECT_NE( stateSchemaFault( R"({"board":"b","objects":[{"name":"t"}]})" ), "" );
}

TEST( StateTest, CallsABoardUnreadableForOneStaleOrUnreadableValue ) {
   EXPECT_TRUE( hasUnreadable( sample ) );
   EXPECT_TRUE( hasUnreadable( { sample[1] } ) );
   EXPECT_TRUE( hasUnreadable( { sample[2] } ) );
   EXPECT_FALSE( hasUnreadable( { sample[0], sample[3] } ) );
}

} // namespace
} // namespace Host
