// What is shipped for Prometheus and Grafana, tried with what the board gives on a bad day.
#include "PlayedMetrics.h"
#include "PrivateFolder.h"
#include "Promtool.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

namespace {

const std::string monitoring = "monitoring/";
const std::vector<std::string> recordingRules{ monitoring + "rules/orbis-recording.yml" };

class MonitoringTest : public ::testing::Test {
 protected:
   void SetUp() override {
      if ( !Promtool::isThere() )
         GTEST_SKIP() << Promtool::whySkipped;
   }
};

std::string replaced( std::string text,
                      const std::vector<std::pair<std::string, std::string>> &all ) {
   for ( const auto &[from, to] : all )
      for ( size_t at = 0; ( at = text.find( from, at ) ) != std::string::npos; at += to.size() )
         text.replace( at, from.size(), to );
   return text;
}

// The queries of the dashboard, as Grafana would ask them for all boards.
std::vector<std::string> dashboardQueries() {
   std::vector<std::string> queries;
   for ( const std::string &query :
         Promtool::foundIn( { monitoring + "dashboard.json" },
                            R"re("(?:expr|definition)": "((?:[^"\\]|\\.)*)")re" ) )
      queries.push_back( replaced( query, { { R"(\")", "\"" },
                                            { "$__rate_interval", "1m" },
                                            { "$job", ".*" },
                                            { "$instance", ".*" },
                                            { "$object", ".*" } } ) );
   return queries;
}

// label_values( QUERY, LABEL ) is Grafana's own.
std::string withoutLabelValues( const std::string &query ) {
   static const std::regex form( R"(label_values\((.*), \w+\))" );
   return std::regex_replace( query, form, "$1" );
}

// The names of the labels of all samples, by family.
std::map<std::string, std::set<std::string>> labelsIn( const std::vector<std::string> &scrapes ) {
   static const std::regex label( R"re((\w+)="(?:[^"\\]|\\.)*")re" );
   std::map<std::string, std::set<std::string>> labels;
   std::set<std::string_view> series; // nearly all are in each scrape
   for ( const std::string &scrape : scrapes )
      for ( size_t at = 0, end = 0; at < scrape.size(); at = end + 1 ) {
         end = scrape.find( '\n', at );
         const std::string_view line( scrape.data() + at, end - at );
         if ( line.starts_with( '#' ) ||
              !series.insert( line.substr( 0, line.rfind( ' ' ) ) ).second )
            continue;
         std::set<std::string> &known =
            labels[scrape.substr( at, scrape.find_first_of( "{ ", at ) - at )];
         for ( std::sregex_iterator
                  one( scrape.begin() + static_cast<std::ptrdiff_t>( at ),
                       scrape.begin() + static_cast<std::ptrdiff_t>( end ), label ),
               last;
               one != last; ++one )
            known.insert( one->str( 1 ) );
      }
   return labels;
}

TEST_F( MonitoringTest, PromtoolFindsNothingInTheMetricsOfABadDay ) {
   const PlayedMetrics played( "bad-day", 0 );
   for ( size_t i = 0; i < played.scrapes().size(); i += 6 )
      EXPECT_EQ( Promtool::complaintOf( { "check", "metrics" }, played.scrapes()[i] ), "" ) << i;
}

TEST_F( MonitoringTest, EachLabelIsDocumented ) {
   const PlayedMetrics played( "bad-day", 0 );
   for ( const auto &[family, labels] : labelsIn( played.scrapes() ) ) {
      const std::string name = std::regex_replace(
         family, std::regex( "(transaction_seconds)_(bucket|sum|count)$" ), "$1" );
      const auto documented = Promtool::foundIn(
         { "docs/metrics.md" }, R"(\| `)" + name + R"(` \| \w+ \| \w* ?\|([^|]*)\|)" );
      ASSERT_EQ( documented.size(), 1u ) << name;
      for ( const std::string &label : labels )
         EXPECT_THAT( documented[0], ::testing::HasSubstr( '`' + label + '`' ) ) << name;
   }
}

// Each is a rule of its own, and gives something while the board is at its worst.
TEST_F( MonitoringTest, EachQueryOfTheDashboardGivesSomething ) {
   const PlayedMetrics played( "bad-day", 0 );
   std::string rules = "groups:\n  - name: dashboard\n    rules:\n";
   std::vector<Promtool::Question> questions;
   for ( const std::string &query : dashboardQueries() ) {
      const std::string name = fmt::format( "dashboard:query:{}", questions.size() );
      rules += fmt::format( "      - record: {}\n        expr: '{}'\n", name,
                            replaced( withoutLabelValues( query ), { { "'", "''" } } ) );
      questions.push_back( { 185, fmt::format( "count({}) > bool 0", name ), { "{} 1" } } );
   }
   ASSERT_GT( questions.size(), 20u );
   const TestSupport::PrivateFolder folder;
   const std::string file = folder.write( "dashboard.yml", rules );
   EXPECT_EQ( Promtool::complaintOf( { "check", "rules", file } ), "" ) << rules;
   const std::vector<std::string> all{ recordingRules[0], monitoring + "rules/orbis-alerts.yml",
                                       file };
   EXPECT_EQ( Promtool::complaintOfRules( all, PlayedMetrics::interval,
                                          played.inputSeries( Promtool::familiesIn( all ) ),
                                          questions ),
              "" )
      << rules;
}

TEST_F( MonitoringTest, AlertsThatNoScenarioFiresAreTestedByAFileOfTheirOwn ) {
   EXPECT_EQ( Promtool::complaintOf( { "test", "rules", monitoring + "tests/quiet.yml" } ), "" );
   std::vector<std::string> files{ monitoring + "tests/quiet.yml" };
   for ( const auto &entry : std::filesystem::directory_iterator( "tests/system/alerts" ) )
      files.push_back( entry.path() );
   const auto tested = Promtool::foundIn( files, R"(\b(Orbis\w+))" );
   for ( const std::string &alert :
         Promtool::foundIn( { monitoring + "rules/orbis-alerts.yml" }, R"(- alert: (\w+))" ) )
      EXPECT_THAT( tested, ::testing::Contains( alert ) );
}

TEST_F( MonitoringTest, TheExampleOfAConfigurationIsGood ) {
   EXPECT_EQ( Promtool::complaintOf( { "check", "config", monitoring + "prometheus.yml" } ), "" );
}

} // namespace
