#include "OrbisGeneric/LibraryInit.h"
#include "OrbisGeneric/Topology.h"
#include "support/PluginFixture.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

class LibraryInitTest : public PluginFixture {};

TEST_F( LibraryInitTest, MakesNoAttemptWithoutRetriesAndFails ) {
   for ( int retries : { 0, -1 } ) {
      EXPECT_EQ( plSockInit( "x", retries ), 4 );
      EXPECT_EQ( FakeServer::setups, 0 );
      EXPECT_EQ( FakeServer::secondsSlept, 0u );
      EXPECT_EQ( _plSock, nullptr );
      EXPECT_TRUE( TestHost::traced( 0, "x: socket Setup failed!" ) );
   }
}

TEST_F( LibraryInitTest, SleepsASecondAfterEveryFailedAttempt ) {
   FakeServer::failingSetups = 3;
   EXPECT_EQ( plSockInit( "x", 3 ), 4 );
   EXPECT_EQ( FakeServer::setups, 3 );
   EXPECT_EQ( FakeServer::secondsSlept, 3u );
   EXPECT_EQ( _plSock, nullptr );
}

TEST_F( LibraryInitTest, ASignalOfTheHostDoesNotShortenTheSecond ) {
   FakeServer::failingSetups = 2;
   FakeServer::signals = 5;
   EXPECT_EQ( plSockInit( "x", 2 ), 4 );
   EXPECT_EQ( FakeServer::signals, 0 );
   EXPECT_EQ( FakeServer::secondsSlept, 2u );
}

TEST_F( LibraryInitTest, KeepsTheSocketOfTheFirstAttemptThatSucceeds ) {
   FakeServer::failingSetups = 2;
   EXPECT_EQ( plSockInit( "x", 30 ), 0 );
   EXPECT_EQ( FakeServer::setups, 3 );
   EXPECT_EQ( FakeServer::secondsSlept, 2u );
   EXPECT_NE( _plSock, nullptr );
   EXPECT_EQ( FakeServer::socketsMade, 1 );
}

TEST_F( LibraryInitTest, ReleasesDescriptorWatcherAndSocketOfAFailedSetUp ) {
   FakeServer::failingSetups = 1;
   FakeServer::failedDescriptor = open( "/dev/null", O_RDONLY | O_CLOEXEC );
   FakeServer::failedWatcher = reinterpret_cast<pl_fd_watcher_handle>( 0x40 );
   EXPECT_EQ( plSockInit( "x", 1 ), 4 );
   EXPECT_EQ( fcntl( FakeServer::failedDescriptor, F_GETFD ), -1 );
   ASSERT_EQ( TestHost::deletedWatchers.size(), 1u );
   EXPECT_EQ( TestHost::deletedWatchers[0], FakeServer::failedWatcher );
   EXPECT_EQ( FakeServer::socketsReleased, 1 );
}

TEST_F( LibraryInitTest, DoesNotDeleteAWatcherThatWasNeverSet ) {
   EXPECT_EQ( plSockInit( "x", 0 ), 4 );
   EXPECT_TRUE( TestHost::deletedWatchers.empty() );
}

TEST_F( LibraryInitTest, StartsFromScratchAfterAFailure ) {
   EXPECT_EQ( plSockInit( "x", 0 ), 4 );
   EXPECT_EQ( plSockInit( "x", 1 ), 0 );
   EXPECT_EQ( FakeServer::socketsMade, 2 );
}

TEST_F( LibraryInitTest, OnlyReloadsTheTopologyOnceConnected ) {
   EXPECT_EQ( orbisLibraryInit( "x", "[]", 1 ), 0 );
   EXPECT_EQ( orbisLibraryInit( "x", "[ ]", 0 ), 0 );
   EXPECT_EQ( FakeServer::setups, 1 );
   EXPECT_EQ( Topology::_topology_json, "[ ]" );
}

TEST_F( LibraryInitTest, DoesNotLookAtTheTopologyWithoutASocket ) {
   EXPECT_EQ( orbisLibraryInit( "x", "not json", 0 ), 4 );
   EXPECT_TRUE( TestHost::tracedAt( 2 ).empty() );
   EXPECT_EQ( Topology::_topology, nullptr );
}

TEST_F( LibraryInitTest, ReturnsTheTopologysStatusAndStaysConnected ) {
   EXPECT_EQ( orbisLibraryInit( "x", "[", 1 ), 3 );
   EXPECT_NE( _plSock, nullptr );
}

TEST_F( LibraryInitTest, TracesTheCallerAndItsTopology ) {
   EXPECT_EQ( orbisLibraryInit( "pl_x_init", "[]", 1 ), 0 );
   EXPECT_EQ( TestHost::traces[0], ( TestHost::Trace{ 0, "pl_x_init" } ) );
   EXPECT_EQ( TestHost::traces[1], ( TestHost::Trace{ 5, "pl_x_init: json = []" } ) );
}

struct EntryPoint {
   const char *name;
   pl_status ( *init )( const char * );
};

class EntryPointTest : public PluginFixture, public ::testing::WithParamInterface<EntryPoint> {};

TEST_P( EntryPointTest, TracesItsNameAndTriesThirtyTimes ) {
   FakeServer::failingSetups = 1000;
   EXPECT_EQ( GetParam().init( "[]" ), 4 );
   EXPECT_EQ( FakeServer::setups, 30 );
   EXPECT_EQ( FakeServer::secondsSlept, 30u );
   EXPECT_EQ( TestHost::tracedAt( 0 ),
              ( std::vector<std::string>{ GetParam().name, std::string( GetParam().name ) +
                                                              ": socket Setup failed!" } ) );
   FakeServer::failingSetups = 0;
   EXPECT_EQ( GetParam().init( "[]" ), 0 );
}

INSTANTIATE_TEST_SUITE_P( All, EntryPointTest,
                          ::testing::Values( EntryPoint{ "pl_slot_init", pl_slot_init },
                                             EntryPoint{ "pl_led_init", pl_led_init },
                                             EntryPoint{ "pl_temp_sensor_init",
                                                         pl_temp_sensor_init },
                                             EntryPoint{ "pl_fan_init", pl_fan_init },
                                             EntryPoint{ "pl_xcvr_init", pl_xcvr_init },
                                             EntryPoint{ "pl_psu_init", pl_psu_init },
                                             EntryPoint{ "pl_gpio_init", pl_gpio_init },
                                             EntryPoint{ "pl_smbus_init", pl_smbus_init },
                                             EntryPoint{ "pl_system_init", pl_system_init } ),
                          []( const auto &entry ) { return entry.param.name; } );

TEST_F( LibraryInitTest, TheProxysEntryPointTracesItsNameTwice ) {
   pl_smbus_init( "[]" );
   EXPECT_EQ( TestHost::traces[0], ( TestHost::Trace{ 7, "pl_smbus_init\n" } ) );
}

} // namespace
