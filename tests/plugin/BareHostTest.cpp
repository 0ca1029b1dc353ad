// The shared library in a host without trace, timers and watchers.
#include "PlatformLibrary/PLSocket.h"
#include "pl.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <utility>

namespace {

void *plugin = nullptr;
bool watches = false; // true: a socket has a watcher when its set-up fails

} // namespace

// Both replace the functions that the plug-in would call otherwise.
int PlatformLibrary::PLSocket::setup() {
   if ( watches ) {
      watcher = reinterpret_cast<pl_fd_watcher_handle>( 0x40 );
      return -1;
   }
   using Setup = int( PLSocket * );
   return reinterpret_cast<Setup *>( dlsym( plugin, "_ZN15PlatformLibrary8PLSocket5setupEv" ) )(
      this );
}
extern "C" int clock_nanosleep( clockid_t, int, const timespec *, timespec * ) { return 0; }

// The plug-in never deletes its objects.
extern "C" const char *__lsan_default_suppressions() { return "leak:libOrbisDriversKelt"; }

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
};

TEST_F( BareHostTest, AFailedSocketKeepsItsWatcherWhenTheHostCantDeleteIt ) {
   auto plSockInit = symbol<int ( * )( const char *, int )>( "_Z10plSockInitPKci" );
   ASSERT_NE( plSockInit, nullptr );
   watches = true;
   EXPECT_EQ( plSockInit( "test", 1 ), 4 );
   watches = false;
   EXPECT_EQ( plSockInit( "test", 1 ), 0 );
}

TEST_F( BareHostTest, LoadsAndInitialises ) {
   ASSERT_NE( plugin, nullptr ) << dlerror();
   auto init = symbol<decltype( &pl_led_init )>( "pl_led_init" );
   ASSERT_NE( init, nullptr );
   EXPECT_EQ( init( "[" ), 3 );
   EXPECT_EQ( init( "[]" ), 0 );
}

TEST_F( BareHostTest, AnUnknownLedSettingStopsTheProcessWithoutTraces ) {
   ASSERT_EQ( symbol<decltype( &pl_led_init )>( "pl_led_init" )(
                 R"([{"type":"I2C",)"
                 R"("ham":"OrbisSmbus","bus":{"id":0,"devices":[{"did":3},{"did":4}]}}])" ),
              0 );
   close( std::exchange( listener, -1 ) ); // requests to the server fail at once
   auto addLed = symbol<decltype( &pl_led_add )>( "pl_led_add" );
   pl_led *systemLed = addLed( R"({"did":3,"driver":"KeltSCPLD","address":{"address":49},)"
                               R"("driverArgs":{"id":"1","type":"status"}})" );
   ASSERT_NE( systemLed, nullptr );
   const auto unknown = static_cast<pl_led_status>( 7 );
   EXPECT_DEATH( systemLed->ops->set_light_setting( systemLed, unknown ),
                 "Assertion `\\( unsigned \\)status < " );
}

// A device that can poll is still made. The process stops when a timer is needed.
TEST_F( BareHostTest, WithoutTimersNothingIsPolledAndNothingBlinks ) {
   ASSERT_EQ( symbol<decltype( &pl_led_init )>( "pl_led_init" )(
                 R"([{"type":"I2C",)"
                 R"("ham":"OrbisSmbus","bus":{"id":0,"devices":[{"did":1},{"did":2}]}}])" ),
              0 );
   close( std::exchange( listener, -1 ) ); // requests to the server fail at once
   auto addLed = symbol<decltype( &pl_led_add )>( "pl_led_add" );
   const std::string cpld =
      R"({"did":1,"driver":"KeltSCPLD","address":{"address":49},"driverArgs":{"id":"1",)";
   const std::string steady = cpld + R"("type":"status"}})", blinking = cpld + R"("type":"psu"}})";
   EXPECT_NE( addLed( steady.c_str() ), nullptr );
   EXPECT_DEATH( addLed( blinking.c_str() ), "Assertion `blinkTimer_' failed" );
   EXPECT_DEATH( addLed( R"({"did":2,"driver":"KeltSCPLD","address":{"address":49},)"
                         R"("driverArgs":{"id":"1","type":"psu","xcvrPoll":""}})" ),
                 "Assertion `pollStart\\(\\)' failed" );
}

} // namespace
