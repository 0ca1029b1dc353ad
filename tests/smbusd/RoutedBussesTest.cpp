#include "smbusd/routes/RoutedBusses.h"
#include "PrivateFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace SmbusdTest {

namespace {

using namespace BoardFiles;
using namespace Bus;
using namespace Smbusd;
using ::testing::EndsWith;
using ::testing::HasSubstr;

struct NamedBus final : RootBus {
   explicit NamedBus( std::string given ) : name( std::move( given ) ) {}
   Outcome transfer( const Transfer & ) override { return { name, {} }; }
   const std::string name;
};

class RoutedBussesTest : public ::testing::Test {
 protected:
   RoutedBussesTest() {
      namespace fs = std::filesystem;
      fs::create_directories( folder.file( "sys/bus/i2c/devices/i2c-5" ) );
      folder.write( "sys/bus/i2c/devices/i2c-5/name", "card bus 1\n" );
   }
   static Busses simulated() {
      Busses busses;
      busses.emplace( *parseRootBusId( "scd(4):1:2" ), std::make_unique<NamedBus>( "wires" ) );
      return busses;
   }
   // The busses of these routes. `missing` gets the warnings.
   Busses route( const std::string &routes, Busses simulatedBusses ) {
      file = loadRoutes( folder.write( "routes.json", "{ \"routes\": [" + routes + "] }" ) );
      RoutedBusses routed( std::move( simulatedBusses ),
                           { folder.file( "sys" ), folder.file( "" ) }, RoutedBusses::Use::Serves );
      for ( const Route &each : file.routes )
         routed.add( each, [this]( const std::string &why ) { missing = why; } );
      return routed.take();
   }
   std::string complaint( const std::string &routes ) {
      try {
         route( routes, simulated() );
         return "none";
      } catch ( const BoardError &error ) {
         return error.what();
      }
   }
   TestSupport::PrivateFolder folder;
   RoutesFile file;
   std::string missing;
};

TEST_F( RoutedBussesTest, ServesOnlySimulatedBussesWithARoute ) {
   const Busses busses = route( R"({ "bus": "scd(4):1:2", "simulated": true })", simulated() );
   ASSERT_EQ( busses.size(), 1u );
   EXPECT_EQ( busses.begin()->second->transfer( {} ).data, "wires" );
   EXPECT_TRUE( route( "", simulated() ).empty() );
}

TEST_F( RoutedBussesTest, RefusesAnUnknownSimulatedBus ) {
   EXPECT_THAT( complaint( R"({ "bus": "scd(4):1:9", "simulated": true })" ),
                EndsWith( "routes.json:1:14: the simulated board has no scd(4):1:9" ) );
   EXPECT_THROW( route( R"({ "bus": "scd(4):1:2", "simulated": true })", {} ), BoardError );
}

TEST_F( RoutedBussesTest, RefusesAMissingAdapterUnlessItIsOptional ) {
   EXPECT_THAT( complaint( R"({ "bus": "i2c:0", "adapter": { "number": 4 } })" ),
                EndsWith( "routes.json:1:14: there is no adapter with number 4" ) );
   const Busses busses =
      route( R"({ "bus": "i2c:0", "adapter": { "number": 4 }, "optional": true })", {} );
   EXPECT_EQ( missing, "i2c:0: there is no adapter with number 4" );
   ASSERT_EQ( busses.size(), 1u );
   EXPECT_EQ( busses.begin()->second->transfer( { .length = 1 } ).error,
              "there is no adapter with number 4" );
}

TEST_F( RoutedBussesTest, RefusesAnAdapterWithoutItsDeviceFile ) {
   EXPECT_THAT( complaint( R"({ "bus": "i2c:0", "adapter": { "name": "card bus 1" } })" ),
                EndsWith( "/i2c-5: No such file or directory; is the module i2c-dev loaded?" ) );
}

TEST_F( RoutedBussesTest, RefusesTwoRoutesToOneAdapter ) {
   EXPECT_THAT( complaint( R"({ "bus": "i2c:0", "adapter": { "number": 5 }, "optional": true },
                    { "bus": "i2c:1", "adapter": { "name": "card bus 1" }, "optional": true })" ),
                EndsWith( "number 5, as the route at " + folder.file( "routes.json:1:14" ) ) );
}

} // namespace

} // namespace SmbusdTest
