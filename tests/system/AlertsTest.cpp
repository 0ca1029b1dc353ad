// Which alerts each scenario of the board fires, and when: alerts/NAME.alerts, a line for each, as
// "from 10 to 80 s: OrbisSlotEmpty object=...". Alerts that aren't there must not fire.
#include "PlayedMetrics.h"
#include "Promtool.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>

namespace {

namespace fs = std::filesystem;

const std::vector<std::string> shippedRules{ "monitoring/rules/orbis-recording.yml",
                                             "monitoring/rules/orbis-alerts.yml" };

struct Alert {
   int from = 0, to = 0; // seconds; when it is there first, and when it isn't any more
   std::string series{}; // as the question below gives it
};

constexpr auto firing =
   R"(count by (alertname, cause, object, value, lane, bus, rule) (ALERTS{alertstate="firing"}))";

std::vector<Alert> alertsIn( const fs::path &path ) {
   static const std::regex form( R"(from (\d+) to (\d+) s: (\w+)(.*))" );
   std::ifstream file( path );
   std::vector<Alert> alerts;
   for ( std::string line; std::getline( file, line ); ) {
      std::smatch parts;
      if ( std::regex_match( line, parts, form ) )
         alerts.push_back( { std::stoi( parts[1] ), std::stoi( parts[2] ),
                             fmt::format( R"({{alertname="{}"{}}} 1)", parts[3].str(),
                                          parts[4].length() > 0 ? "," + parts[4].str() : "" ) } );
      else if ( !line.empty() && !line.starts_with( '#' ) )
         ADD_FAILURE() << path << ": not understood: " << line;
   }
   return alerts;
}

std::vector<std::string> scenariosWithAlerts() {
   std::vector<std::string> names;
   for ( const auto &entry : fs::directory_iterator( "tests/system/alerts" ) )
      names.push_back( entry.path().stem() );
   std::sort( names.begin(), names.end() );
   return names;
}

class AlertsTest : public ::testing::TestWithParam<std::string> {
 protected:
   void SetUp() override {
      if ( !Promtool::isThere() )
         GTEST_SKIP() << Promtool::whySkipped;
   }
};

TEST_P( AlertsTest, TheScenarioFiresExactlyItsAlerts ) {
   const PlayedMetrics played( GetParam(), 60 );
   const auto alerts = alertsIn( fs::path( "tests/system/alerts" ) / ( GetParam() + ".alerts" ) );
   std::vector<Promtool::Question> questions;
   for ( int second = 0; second <= played.seconds(); second += PlayedMetrics::interval ) {
      questions.push_back( { second, firing, {} } );
      for ( const Alert &alert : alerts )
         if ( alert.from <= second && second < alert.to )
            questions.back().series.push_back( alert.series );
   }
   EXPECT_EQ( Promtool::complaintOfRules(
                 shippedRules, PlayedMetrics::interval,
                 played.inputSeries( Promtool::familiesIn( shippedRules ) ), questions ),
              "" );
}

INSTANTIATE_TEST_SUITE_P( Kelt, AlertsTest, ::testing::ValuesIn( scenariosWithAlerts() ),
                          []( const auto &name ) {
                             std::string words = name.param;
                             std::replace( words.begin(), words.end(), '-', '_' );
                             return words;
                          } );

} // namespace
