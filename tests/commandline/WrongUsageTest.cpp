#include "commandline/WrongUsage.h"

#include <CLI/CLI.hpp>
#include <gtest/gtest.h>

namespace CommandLineTest {

namespace {

class WrongUsageTest : public ::testing::Test {
 protected:
   WrongUsageTest() {
      app.require_subcommand( 1 );
      app.fallthrough();
      app.add_option( "--socket" );
      CLI::App *show = app.add_subcommand( "show" );
      show->add_flag( "--json" );
      show->add_option( "BOARD" )->required();
      app.add_subcommand( "watch" );
      app.add_subcommand( "child" )->group( "" ); // not for users
   }
   // What is said to these words.
   std::string said( const std::string &words ) {
      try {
         app.parse( words );
      } catch ( const CLI::ParseError &error ) {
         return CommandLine::explain( app, error );
      }
      return "";
   }
   CLI::App app{ "A program", "program" };
};

TEST_F( WrongUsageTest, AnUnknownCommandGetsTheNearestAndAllOthers ) {
   EXPECT_EQ( said( "shw here" ),
              "shw is not a command (did you mean \"show\"?). Commands: show, watch" );
   EXPECT_EQ( said( "explode" ), "explode is not a command. Commands: show, watch" );
}

TEST_F( WrongUsageTest, AMissingCommandGetsAllOfThem ) {
   EXPECT_EQ( said( "" ), "a command is missing. Commands: show, watch" );
   EXPECT_EQ( said( "--socket x" ), "a command is missing. Commands: show, watch" );
}

TEST_F( WrongUsageTest, AnUnknownOptionGetsTheNearestOfItsCommandAndOfThoseAbove ) {
   EXPECT_EQ( said( "show here --jsno" ), "--jsno is not an option (did you mean \"--json\"?)" );
   EXPECT_EQ( said( "show here --soket=x" ),
              "--soket is not an option (did you mean \"--socket\"?)" );
   EXPECT_EQ( said( "show here --frobnicate" ), "--frobnicate is not an option" );
}

TEST_F( WrongUsageTest, AnOptionInFrontOfItsCommandIsToldItsPlace ) {
   EXPECT_EQ( said( "--json show here" ), "--json has to stand behind show" );
   EXPECT_EQ( said( "--json=x show here" ), "--json has to stand behind show" );
}

TEST_F( WrongUsageTest, OtherErrorsKeepTheirWords ) {
   EXPECT_EQ( said( "show" ), "BOARD is required" );
}

TEST_F( WrongUsageTest, HelpIsNoError ) {
   try {
      app.parse( "--help" );
      FAIL();
   } catch ( const CLI::ParseError &end ) {
      testing::internal::CaptureStdout();
      EXPECT_TRUE( CommandLine::report( app, end ) );
      EXPECT_NE( testing::internal::GetCapturedStdout().find( "Usage: program" ),
                 std::string::npos );
   }
}

TEST_F( WrongUsageTest, AnErrorGoesToStandardErrorWithTheNameOfTheProgram ) {
   try {
      app.parse( "shw" );
      FAIL();
   } catch ( const CLI::ParseError &end ) {
      testing::internal::CaptureStderr();
      EXPECT_FALSE( CommandLine::report( app, end ) );
      EXPECT_EQ( testing::internal::GetCapturedStderr(),
                 "program: shw is not a command (did you mean \"show\"?). Commands: show, watch\n"
                 "Run with --help for more information.\n" );
   }
}

} // namespace

} // namespace CommandLineTest
