// What users of this machine may do at the sockets of the programs. To be several users takes root.
#include "PrivateFolder.h"
#include "StartedProgram.h"

#include <gmock/gmock.h>

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <optional>

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using TestSupport::StartedProgram;

// Groups that every Debian has.
const std::string readers = "users";
const std::string drivers = "games";

class RightsTest : public ::testing::Test {
 protected:
   void SetUp() override {
      if ( geteuid() != 0 || access( "/usr/bin/setpriv", X_OK ) != 0 )
         GTEST_SKIP() << "NOT TESTED: only root with setpriv can be several users";
      chmod( folder_.path().c_str(), 0755 );
      std::vector<std::string> command{ ORBIS_SMBUSD,
                                        "--socket",
                                        path_,
                                        "--simulate",
                                        BOARDS "/kelt/topology.json",
                                        "--simulation",
                                        BOARDS "/kelt/simulation.json",
                                        "--group",
                                        drivers,
                                        "--read-group",
                                        readers,
                                        "--write-policy",
                                        folder_.write( "writes.json", policy_ ) };
      server_.emplace( command,
                       TestSupport::ProgramSettings{ .errorFile = folder_.file( "log" ) } );
      folder_.waitFor( "log", "serving" );
   }
   // What the user nobody gets, as a member of these groups.
   std::string as( const std::string &groups, std::vector<std::string> words ) {
      std::vector<std::string> command{ "/usr/bin/setpriv", "--reuid=nobody", "--regid=nogroup",
                                        "--groups=" + groups };
      command.insert( command.end(), words.begin(), words.end() );
      StartedProgram program( command, { .environment = environment_ } );
      const int code = program.wait();
      return std::to_string( code ) + " " + program.output() + program.errors();
   }
   std::string smbus( const std::string &groups, std::vector<std::string> words ) {
      words.insert( words.begin(), { ORBIS_SMBUS } );
      return as( groups, words );
   }

   TestSupport::PrivateFolder folder_;
   const std::string path_ = folder_.file( "smbus.sock" );
   const std::string host_ = folder_.file( "host.sock" );
   const std::string policy_ =
      R"({ "writes": [ { "user": "nobody", "bus": "scd(4):1:2", "via": "0x70=1", "address": 72,
                         "registers": [ { "first": 3, "bytes": 2 } ], "reason": "a test" } ] })";
   const std::vector<std::string> environment_{ "ORBIS_SMBUS_SOCKET=" + path_,
                                                "ORBIS_HOST_SOCKET=" + host_ };
   std::optional<StartedProgram> server_;
};

TEST_F( RightsTest, AReaderReadsAndWritesNothing ) {
   EXPECT_EQ( smbus( readers, { "read", "i2c:0:0x48" } ), "0 0x2f\n" );
   EXPECT_THAT( smbus( readers, { "read", "scd(4):1:2:0x48", "0", "--via", "0x70=1" } ),
                HasSubstr( "0 0x" ) );
   const std::string refused = smbus( readers, { "write", "i2c:0:0x48", "3", "1" } );
   EXPECT_THAT( refused, AllOf( HasSubstr( "3 " ),
                                HasSubstr( "members of the group " + drivers + " may use it" ) ) );
   EXPECT_THAT( smbus( readers, { "--socket", path_ + ".read", "write", "i2c:0:0x48", "3", "1" } ),
                AllOf( HasSubstr( "1 " ), HasSubstr( "this socket is only for reading" ) ) );
   EXPECT_THAT( smbus( readers, { "sim", "list" } ), HasSubstr( "temp-cpu" ) );
   EXPECT_THAT(
      smbus( readers, { "sim", "pull", "psu2" } ),
      AllOf( HasSubstr( "1 " ), HasSubstr( "user nobody may only read here; members of the "
                                           "group " +
                                           drivers + " may act" ) ) );
}

TEST_F( RightsTest, WhoIsInNoGroupReachesNothing ) {
   EXPECT_THAT( smbus( "nogroup", { "read", "i2c:0:0x48" } ), HasSubstr( "permission denied" ) );
   EXPECT_THAT( smbus( "nogroup", { "sim", "list" } ), HasSubstr( "ermission denied" ) );
}

TEST_F( RightsTest, ADriverWritesWhatThePolicyAllowsAndThatIsLogged ) {
   const std::string both = readers + "," + drivers;
   EXPECT_THAT( smbus( both, { "sim", "pull", "psu2" } ), HasSubstr( "done: pull psu2" ) );
   const std::vector<std::string> allowed{ "write", "scd(4):1:2:0x48", "3",     "0x19",
                                           "0x80",  "--via",           "0x70=1" };
   EXPECT_THAT( smbus( both, allowed ), HasSubstr( "0 " ) );
   EXPECT_THAT( smbus( both, { "write", "i2c:0:0x48", "3", "1" } ),
                AllOf( HasSubstr( "1 " ), HasSubstr( "nobody (user " ),
                       HasSubstr( " orbis-smbus) has no right to it: no row of " ) ) );
   const std::string log = folder_.read( "log" );
   EXPECT_THAT( log, HasSubstr( " orbis-smbus): write of 2 bytes to 0x48 register 0x03 behind "
                                "0x70=1 on scd(4):1:2: 0x19 0x80: done; allowed at " ) );
   EXPECT_THAT( log, HasSubstr( "refused: request 1 of 1: write of 1 byte to 0x48 register 0x03 on "
                                "i2c:0: nobody (user " ) );
}

TEST_F( RightsTest, OnlyDriversActThroughServe ) {
   StartedProgram serve( { ORBIS_HOST, "serve", BOARDS "/kelt", "--control-group", drivers },
                         { .errorFile = folder_.file( "served" ), .environment = environment_ } );
   folder_.waitFor( "served", "serving " );
   ASSERT_EQ( chown( host_.c_str(), 0, getgrnam( readers.c_str() )->gr_gid ), 0 );
   const auto host = [this]( const std::string &groups, std::vector<std::string> words ) {
      words.insert( words.begin(), { ORBIS_HOST } );
      words.insert( words.end(), { "--board", BOARDS "/kelt" } );
      return as( groups, words );
   };
   const std::vector<std::string> drive{ "fan", "fan1", "12000" };
   const std::string mayNot =
      "user nobody may only read here; members of the group " + drivers + " may act";
   EXPECT_THAT( host( readers, drive ), AllOf( HasSubstr( "1 " ), HasSubstr( mayNot ) ) );
   EXPECT_THAT( host( readers, { "acknowledge", "some cause" } ), HasSubstr( mayNot ) );
   EXPECT_THAT( host( readers + "," + drivers, drive ), HasSubstr( "0 " ) );
   EXPECT_THAT( host( readers + "," + drivers, { "acknowledge", "some cause" } ),
                ::testing::Not( HasSubstr( "may only read" ) ) );
   EXPECT_THAT( as( readers, { ORBIS_HOST, "show", BOARDS "/kelt" } ), HasSubstr( "24.5" ) );
}

} // namespace
