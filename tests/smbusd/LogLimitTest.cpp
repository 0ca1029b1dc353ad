#include "smbusd/server/LogLimit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <spdlog/sinks/ostream_sink.h>

#include <sstream>

namespace SmbusdTest {

namespace {

using namespace std::chrono_literals;

class LogLimitTest : public ::testing::Test {
 protected:
   LogLimitTest() { lines->set_pattern( "%v" ); }
   void log( std::chrono::milliseconds at, const std::string &line,
             spdlog::level::level_enum level = spdlog::level::warn ) {
      limit.log( { spdlog::log_clock::time_point( 1000s + at ), {}, "test", level, line } );
   }
   std::ostringstream text;
   const std::shared_ptr<spdlog::sinks::sink> lines =
      std::make_shared<spdlog::sinks::ostream_sink_mt>( text );
   Smbusd::LogLimit limit{ lines, 2 };
};

TEST_F( LogLimitTest, PassesSoManyWarningsASecondAndCountsTheOthers ) {
   log( 0ms, "one" );
   log( 1ms, "two", spdlog::level::err );
   log( 2ms, "three" );
   log( 999ms, "four" );
   EXPECT_EQ( text.str(), "one\ntwo\n" );
   log( 1000ms, "five" );
   EXPECT_EQ( text.str(), "one\ntwo\n2 more lines were left out: at most 2 warnings a second are "
                          "logged\nfive\n" );
}

TEST_F( LogLimitTest, PassesEverythingElse ) {
   for ( int i = 0; i < 4; ++i )
      log( 0ms, "x", i % 2 ? spdlog::level::debug : spdlog::level::critical );
   EXPECT_EQ( text.str(), "x\nx\nx\nx\n" );
}

TEST_F( LogLimitTest, GoesOnWhenTheClockIsSetBack ) {
   log( 500s, "one" );
   log( 500s, "two" );
   log( 500s, "three" );
   log( 0s, "four" );
   EXPECT_THAT( text.str(), testing::EndsWith( "\nfour\n" ) );
}

} // namespace

} // namespace SmbusdTest
