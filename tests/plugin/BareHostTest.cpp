// The shared library as a host sees it that provides no trace, no timers and no watchers.
#include "pl.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace {

class BareHostTest : public ::testing::Test {
 protected:
   BareHostTest() {
      char pattern[] = "/tmp/bare-host-XXXXXX";
      folder = mkdtemp( pattern );
      const std::string path = folder + "/smbus.sock";
      sockaddr_un address{};
      address.sun_family = AF_UNIX;
      path.copy( address.sun_path, sizeof( address.sun_path ) - 1 );
      listener = socket( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0 );
      bind( listener, reinterpret_cast<sockaddr *>( &address ), sizeof( address ) );
      listen( listener, 1 );
      setenv( "ORBIS_SMBUS_SOCKET", path.c_str(), 1 );
      plugin = dlopen( PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL );
   }
   ~BareHostTest() override {
      close( listener );
      unlink( ( folder + "/smbus.sock" ).c_str() );
      rmdir( folder.c_str() );
   }

   template <typename Function>
   Function symbol( const char *name ) {
      return reinterpret_cast<Function>( dlsym( plugin, name ) );
   }

   std::string folder;
   int listener = -1;
   void *plugin = nullptr;
};

TEST_F( BareHostTest, LoadsAndInitialises ) {
   ASSERT_NE( plugin, nullptr ) << dlerror();
   auto init = symbol<decltype( &pl_led_init )>( "pl_led_init" );
   ASSERT_NE( init, nullptr );
   EXPECT_EQ( init( "[" ), 3 );
   EXPECT_EQ( init( "[]" ), 0 );
}

TEST_F( BareHostTest, FailsToConnectWithoutAWatcherServiceToCall ) {
   auto plSockInit = symbol<int ( * )( const char *, int )>( "_Z10plSockInitPKci" );
   ASSERT_NE( plSockInit, nullptr );
   EXPECT_EQ( plSockInit( "test", 0 ), 4 );
}

} // namespace
