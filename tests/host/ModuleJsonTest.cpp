// A module on its way from serve to a command.
#include "host/serve/ModuleJson.h"

#include "optics/ImageFile.h"
#include "support/StateSchema.h"

#include <gmock/gmock.h>

namespace Host {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

// A QSFP28 with a vendor, and light on its first lane.
CageModule moduleOfJson() {
   std::vector<uint8_t> bytes( 640 );
   bytes[0] = bytes[128] = 0x11;
   bytes[35] = 0x64;
   bytes[220] = 0x3C; // all monitors
   bytes[1] = 8;
   bytes[148] = 'O';
   bytes[149] = 0x01;
   CageModule made{ .cage = "qsfp1", .age = 2.5, .image = Optics::imageOfFile( bytes, {} ) };
   decode( made );
   return made;
}

TEST( ModuleJsonTest, FollowsItsSchemaAndNothingGetsLost ) {
   const CageModule emptyCage{ .cage = "qsfp2", .state = State::Absent };
   const CageModule unread{ .cage = "sfp1",
                            .state = State::Unreadable,
                            .fault = { .status = 6, .words = "no answer" } };
   const std::string json = toJson( "/b", { moduleOfJson(), emptyCage, unread } );
   EXPECT_EQ( schemaFault( json, "modules" ), "" ) << json;
   const auto read = readModules( json );
   ASSERT_TRUE( read );
   EXPECT_EQ( toJson( "/b", *read ), json );
   EXPECT_EQ( read->at( 0 ).module.value().vendor, "O\\x01" );
   EXPECT_EQ( read->at( 1 ).state, State::Absent );
   EXPECT_EQ( read->at( 2 ).fault.status, 6 );
}

TEST( ModuleJsonTest, NoLightIsNullInDbm ) {
   const std::string json = toJson( moduleOfJson() );
   EXPECT_THAT( json, HasSubstr( R"("value":0.01,"dbm":-20.0)" ) );
   EXPECT_THAT( json, HasSubstr( R"("value":0.0,"dbm":null)" ) );
   const auto read = readModule( json );
   ASSERT_TRUE( read );
   EXPECT_EQ( toJson( *read ), json );
}

TEST( ModuleJsonTest, RefusesWhatIsNoModule ) {
   for ( const char *wrong :
         { "", "[]", R"({"error":"no such path"})", R"({"state":"good"})",
           R"({"state":"ok","memory":[{"address":80,"first":0,"bytes":"0"}]})",
           R"({"state":"ok","memory":[{"address":80,"first":0,"bytes":"zz"}]})",
           R"({"state":"ok","memory":[{"address":80,"first":127,"bytes":"0000"}]})",
           R"({"state":"ok","memory":[{"address":800,"first":0,"bytes":"00"}]})" } )
      EXPECT_FALSE( readModule( wrong ) ) << wrong;
   EXPECT_FALSE( readModules( R"({"board":"b"})" ) );
   EXPECT_FALSE( readModules( R"({"board":"b","modules":[{}]})" ) );
}

} // namespace
} // namespace Host
