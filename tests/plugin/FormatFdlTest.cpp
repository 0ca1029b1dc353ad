#include "OrbisGeneric/Drivers/Helpers.h"
#include "support/PluginFixture.h"

namespace {

using Drivers::FormatFdl;

class FormatFdlTest : public PluginFixture {};

TEST_F( FormatFdlTest, FillsItsKeysAndStartsAgainFromTheTemplate ) {
   FormatFdl fdl( "PSU {model} rev {rev}" );
   fdl.start();
   EXPECT_TRUE( fdl.set( "model", "A1" ) );
   EXPECT_TRUE( fdl.set( "rev", "3" ) );
   EXPECT_STREQ( fdl.charPtr(), "PSU A1 rev 3" );
   EXPECT_TRUE( TestHost::traced( 5, "FormatFdl::set( 'model', 'A1' )" ) );
   fdl.start();
   fdl.set( "rev", "4" );
   EXPECT_STREQ( fdl.charPtr(), "PSU {model} rev 4" ); // a key that was not set remains
}

TEST_F( FormatFdlTest, ReplacesOnlyTheFirstOfTwoEqualKeys ) {
   FormatFdl fdl( "{x}-{x}" );
   fdl.start();
   fdl.set( "x", "1" );
   EXPECT_STREQ( fdl.charPtr(), "1-{x}" );
}

TEST_F( FormatFdlTest, ALaterCallReplacesAKeyInsideAValue ) {
   FormatFdl fdl( "{a}" );
   fdl.start();
   fdl.set( "a", "<{b}>" );
   fdl.set( "b", "2" );
   EXPECT_STREQ( fdl.charPtr(), "<2>" );
}

TEST_F( FormatFdlTest, AKeyThatTheTemplateLacksStopsTheProcess ) {
   FormatFdl fdl( "{a}" );
   fdl.start();
   EXPECT_DEATH( fdl.set( "b", "" ), "0 Error: FormatFdl::set -- invalid key '\\{b\\}'\n(.|\n)*"
                                     "OrbisGeneric/Drivers/Helpers\\.cpp.*Assertion" );
}

TEST_F( FormatFdlTest, AWrongOrderOfCallsStopsTheProcess ) {
   FormatFdl fdl( "{a}" );
   EXPECT_DEATH( fdl.set( "a", "" ),
                 ::testing::HasSubstr( "\"FormatFdl: Must call start() before set(...)\"" ) );
   EXPECT_DEATH( fdl.charPtr(),
                 ::testing::HasSubstr( "\"FormatFdl: Must call start() before charPtr()\"" ) );
   fdl.start();
   fdl.charPtr();
   EXPECT_DEATH( fdl.charPtr(), "Must call start" );
}

} // namespace
