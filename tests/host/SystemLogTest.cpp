#include "host/serve/SystemLog.h"

#include "PrivateFolder.h"

#include <cstdlib>
#include <fcntl.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace Host {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::StartsWith;

TEST( SystemLogTest, AnEventIsFieldsThatAQueryCanFind ) {
   EXPECT_THAT( systemLogFields( { .id = 7,
                                   .cause = "cpu temperature high",
                                   .object = "cpu",
                                   .value = "temperature",
                                   .level = Health::Level::Critical,
                                   .words = "too hot",
                                   .number = 120.5,
                                   .limit = 100,
                                   .unit = "°C",
                                   .explains = { "fan1", "fan2" } } ),
                ElementsAre( "MESSAGE=critical: cpu temperature high: too hot; explains fan1, fan2",
                             StartsWith( "MESSAGE_ID=" ), "PRIORITY=2",
                             "SYSLOG_IDENTIFIER=orbis-host", "ORBIS_EVENT=7", "ORBIS_WHAT=set",
                             "ORBIS_LEVEL=critical", "ORBIS_CAUSE=cpu temperature high",
                             "ORBIS_OBJECT=cpu", "ORBIS_VALUE=temperature", "ORBIS_NUMBER=120.5",
                             "ORBIS_LIMIT=100", "ORBIS_UNIT=°C", "ORBIS_EXPLAINS=fan1",
                             "ORBIS_EXPLAINS=fan2" ) );
}

TEST( SystemLogTest, EachKindOfEventHasAnIdOfItsOwnAndItsPriority ) {
   std::set<std::string> ids;
   for ( const Health::Event::What what : { Health::Event::What::Set, Health::Event::What::Clear,
                                            Health::Event::What::Acknowledged } )
      ids.insert( systemLogFields( { .what = what } ).at( 1 ) );
   EXPECT_EQ( ids.size(), 3u );
   for ( const std::string &id : ids )
      EXPECT_EQ( id.size(), std::string( "MESSAGE_ID=" ).size() + 32 );
   EXPECT_THAT( systemLogFields( { .level = Health::Level::Warning } ), Contains( "PRIORITY=4" ) );
   EXPECT_THAT( systemLogFields( { .level = Health::Level::Indeterminate } ),
                Contains( "PRIORITY=4" ) );
   EXPECT_THAT(
      systemLogFields( { .what = Health::Event::What::Clear, .level = Health::Level::Critical } ),
      Contains( "PRIORITY=5" ) );
}

TEST( SystemLogTest, OnlyTheStreamThatTheVariableNamesIsTheSystems ) {
   const TestSupport::PrivateFolder folder;
   const int stream = ::open( folder.write( "stream", "" ).c_str(), O_RDONLY );
   const int other = ::open( folder.write( "other", "" ).c_str(), O_RDONLY );
   struct stat status {};
   ASSERT_EQ( ::fstat( stream, &status ), 0 );
   ::unsetenv( "JOURNAL_STREAM" );
   EXPECT_FALSE( isSystemLog( stream ) );
   ::setenv( "JOURNAL_STREAM", fmt::format( "{}:{}", status.st_dev, status.st_ino ).c_str(), 1 );
   EXPECT_TRUE( isSystemLog( stream ) );
   EXPECT_FALSE( isSystemLog( other ) ); // a parent's variable says nothing of a file
   ::unsetenv( "JOURNAL_STREAM" );
   ::close( stream );
   ::close( other );
}

} // namespace
} // namespace Host
