#include "host/session/ServerProbe.h"

#include "PrivateFolder.h"
#include "support/NoRights.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <sockets/SocketFile.h>

namespace Host {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class ServerProbeTest : public ::testing::Test {
 protected:
   ServerProbeTest() { ::unsetenv( "SCRIPTED_SOCKET" ); }
   std::string why() const { return whyNoServer( { "SCRIPTED_SOCKET", path } ); }

   const TestSupport::PrivateFolder folder;
   const std::string path = folder.file( "smbus.sock" );
};

TEST_F( ServerProbeTest, FindsNothingWrongWithAServer ) {
   const Sockets::SocketFile server( path, "" );
   EXPECT_EQ( why(), "" );
}

TEST_F( ServerProbeTest, NamesASocketThatIsNotThere ) {
   EXPECT_THAT( why(), StartsWith( path + ": there is no such socket" ) );
}

TEST_F( ServerProbeTest, SaysThatItMayNotUseTheSocket ) {
   const Sockets::SocketFile server( path, "" );
   const NoRights none( path );
   EXPECT_THAT( why(), StartsWith( path + ": permission denied" ) );
}

TEST_F( ServerProbeTest, TakesTheSocketThatTheEnvironmentNames ) {
   ::setenv( "SCRIPTED_SOCKET", "/no/such/socket", 1 );
   EXPECT_THAT( why(), StartsWith( "/no/such/socket: " ) );
}

TEST_F( ServerProbeTest, SaysThatAPathIsTooLong ) {
   EXPECT_THAT( whyNoServer( { "SCRIPTED_SOCKET", std::string( 200, 'x' ) } ),
                HasSubstr( "1 to 107 characters" ) );
}

TEST_F( ServerProbeTest, KnowsNothingOfAPluginThatNamesNoSocket ) {
   EXPECT_EQ( whyNoServer( {} ), "" );
}

} // namespace
} // namespace Host
