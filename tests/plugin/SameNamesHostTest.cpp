// A host whose own symbols have the same names as symbols of the plug-in. They are in the program,
// where the dynamic linker looks first.
#include "pl.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

// Symbols that the plug-in exports, C and C++.
extern "C" {
int ops[4] = { 1, 2, 3, 4 };
pl_fan *pl_fan_add( const char * ) { return nullptr; }
void pl_trace( int, const char *format, ... ) {
   va_list arguments;
   va_start( arguments, format );
   vfprintf( stderr, format, arguments );
   va_end( arguments );
}
}
int initCalls = 0;
int orbisLibraryInit( const char *, const char *, int ) { return ++initCalls, 77; }
int plSockInit( const char *, int ) { return ++initCalls, 78; }
pl_status pl_system_poweroff( pl_system * ) { return PL_STATUS_UNSUPPORTED; }

// The plug-in never deletes its objects.
extern "C" const char *__lsan_default_suppressions() { return "leak:libOrbisDriversKelt"; }

// Symbols that the plug-in hides, and names that many libraries use.
void *_plSock = nullptr;
namespace Topology {
long _topology = 5;
int loadTopology( char const * ) { return ++initCalls, 79; }
} // namespace Topology
namespace Drivers {
double drivers = 6;
}

namespace {

class SameNamesHostTest : public ::testing::Test {
 protected:
   SameNamesHostTest() {
      const std::string path = folder + "/smbus.sock";
      sockaddr_un address{};
      address.sun_family = AF_UNIX;
      path.copy( address.sun_path, sizeof( address.sun_path ) - 1 );
      bind( listener, reinterpret_cast<sockaddr *>( &address ), sizeof( address ) );
      listen( listener, 1 );
      setenv( "ORBIS_SMBUS_SOCKET", path.c_str(), 1 );
      plugin = dlopen( PLUGIN_PATH, RTLD_NOW | RTLD_GLOBAL );
   }
   ~SameNamesHostTest() override {
      close( listener );
      unlink( ( folder + "/smbus.sock" ).c_str() );
      rmdir( folder.c_str() );
   }
   template <typename Function>
   Function *symbol( const char *name ) {
      return reinterpret_cast<Function *>( dlsym( plugin, name ) );
   }

   std::string pattern = "/tmp/same-names-XXXXXX";
   std::string folder = mkdtemp( pattern.data() );
   int listener = socket( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0 );
   void *plugin = nullptr;
};

TEST_F( SameNamesHostTest, HostAndPlugInUseTheirOwnSymbols ) {
   ASSERT_NE( plugin, nullptr ) << dlerror();
   // From the entry point to the loaded topology, only functions of the plug-in run.
   EXPECT_EQ( symbol<decltype( pl_system_init )>( "pl_system_init" )( "[]" ), PL_STATUS_OK );
   EXPECT_EQ( symbol<decltype( pl_system_init )>( "pl_system_init" )( "[" ), 3 );
   EXPECT_EQ( initCalls, 0 );

   pl_system *system = symbol<decltype( pl_system_add )>( "pl_system_add" )( "{}" );
   EXPECT_EQ( system->ops, dlsym( plugin, "ops" ) );
   EXPECT_NE( static_cast<const void *>( system->ops ), ops );
   EXPECT_EQ( system->ops->size, sizeof( pl_system_ops ) );
   EXPECT_NE( system->ops->poweroff, pl_system_poweroff );
   EXPECT_EQ( system->ops->get_reload_cause( system, nullptr, nullptr, nullptr ), 5 );

   EXPECT_EQ( ops[0], 1 );
   EXPECT_EQ( ops[3], 4 );
   EXPECT_EQ( _plSock, nullptr );
   EXPECT_EQ( Topology::_topology, 5 );
   EXPECT_EQ( Drivers::drivers, 6 );
}

// A composite adds its parts with the entry point of the plug-in.
TEST_F( SameNamesHostTest, ThePlugInAddsAPartOfACompositeItself ) {
   ASSERT_NE( plugin, nullptr ) << dlerror();
   symbol<decltype( pl_fan_init )>( "pl_fan_init" )( "[]" );
   const char *const composite =
      R"({"did":1,"driver":"DualFan","isMultiDevice":true,"address":{"address":0},)"
      R"("driverArgs":{"fanId":1,"maxRpm":9,"maxDiff":0.5},)"
      R"("multiDeviceArgs":{"inlet":"{","outlet":"{"}})";
   EXPECT_DEATH( symbol<decltype( pl_fan_add )>( "pl_fan_add" )( composite ),
                 "failed to parse json object as a device(.|\n)*Assertion `inlet' failed" );
}

} // namespace
