#include "boardfiles/RoutesFile.h"
#include "PrivateFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace BoardFilesTest {

namespace {

using namespace BoardFiles;
using namespace Bus;

class RoutesFileTest : public ::testing::Test {
 protected:
   std::unique_ptr<const RoutesFile> load( const std::string &routes ) {
      return loadRoutes( folder.write( "routes.json", "{ \"routes\": [" + routes + "] }" ) );
   }
   // What is said of them, without the file's name.
   std::string complaint( const std::string &routes ) {
      try {
         load( routes );
         return "none";
      } catch ( const BoardError &error ) {
         const std::string text = error.what(), file = folder.file( "routes.json: " );
         EXPECT_TRUE( text.starts_with( file ) ) << text;
         return text.substr( file.size() );
      }
   }
   TestSupport::PrivateFolder folder;
};

TEST_F( RoutesFileTest, ReadsEveryKindOfRoute ) {
   const auto file = load( R"(
      { "bus": "scd(4):1:2", "adapter": { "path": "/sys/devices/pci/i2c-3" }, "optional": true,
        "chips": [ { "address": 49, "offsetBytes": 2 }, { "address": 72, "force": true } ] },
      { "bus": "scd(4):1:3", "adapter": { "name": "card bus 1" } },
      { "bus": "i2c:0", "adapter": { "number": 7 } },
      { "bus": "ioport:0", "ports": { "base": 512, "size": 16 } },
      { "bus": "celestica:1:1", "simulated": true } )" );
   const std::vector<Route> &routes = file->routes;
   ASSERT_EQ( routes.size(), 5u );
   EXPECT_EQ( toString( routes[0].bus ), "scd(4):1:2" );
   EXPECT_TRUE( routes[0].optional );
   EXPECT_FALSE( routes[1].optional );
   const auto &first = std::get<AdapterRoute>( routes[0].to );
   EXPECT_EQ( first.adapter, WantedAdapter( AdapterPath{ "/sys/devices/pci/i2c-3" } ) );
   EXPECT_EQ( first.chips.at( 49 ).offsetBytes, 2u );
   EXPECT_FALSE( first.chips.at( 49 ).force );
   EXPECT_EQ( first.chips.at( 72 ).offsetBytes, 0u );
   EXPECT_TRUE( first.chips.at( 72 ).force );
   EXPECT_EQ( std::get<AdapterRoute>( routes[1].to ).adapter,
              WantedAdapter( AdapterName{ "card bus 1" } ) );
   EXPECT_EQ( std::get<AdapterRoute>( routes[2].to ).adapter, WantedAdapter( AdapterNumber{ 7 } ) );
   EXPECT_EQ( std::get<PortsRoute>( routes[3].to ).base, 512u );
   EXPECT_EQ( std::get<PortsRoute>( routes[3].to ).size, 16u );
   EXPECT_TRUE( std::holds_alternative<SimulatedRoute>( routes[4].to ) );
}

TEST_F( RoutesFileTest, ReadsTheExampleInTheDocuments ) {
   std::ifstream stream( DOCS "/real-board.md" );
   std::string text{ std::istreambuf_iterator<char>( stream ), {} };
   const size_t start = text.find( "```json\n" ) + 8;
   const auto file = loadRoutes(
      folder.write( "example.json", text.substr( start, text.find( "```", start ) - start ) ) );
   EXPECT_EQ( file->routes.size(), 6u );
}

TEST_F( RoutesFileTest, RefusesWhatTheSchemaDoesntHave ) {
   EXPECT_EQ( complaint( R"({ "bus": "i2c:0" })" ),
              "/routes/0: has to have one of \"simulated\", \"adapter\", \"ports\", and only one" );
   EXPECT_EQ( complaint( R"({ "bus": "i2c:0", "simulated": true, "adapter": { "number": 1 } })" ),
              "/routes/0: has to have one of \"simulated\", \"adapter\", \"ports\", and only one" );
   EXPECT_EQ(
      complaint( R"({ "bus": "i2c:0", "adapter": {} })" ),
      "/routes/0/adapter: has to have one of \"number\", \"name\", \"path\", and only one" );
   EXPECT_EQ( complaint( R"({ "simulated": true })" ), "/routes/0: has no \"bus\"" );
   EXPECT_EQ( complaint( R"({ "bus": "i2c:0", "simulated": true, "pec": 1 })" ),
              "/routes/0/pec: unknown key" );
   EXPECT_EQ(
      complaint(
         R"({ "bus": "i2c:0", "adapter": { "number": 1 }, "chips": [ { "address": 128 } ] })" ),
      "/routes/0/chips/0/address: 128 is above 127" );
}

TEST_F( RoutesFileTest, RefusesWhatIsNoBus ) {
   EXPECT_EQ( complaint( R"({ "bus": "scd:1:2", "simulated": true })" ),
              "/routes/0/bus: \"scd:1:2\" is no bus; i2c:0, scd(4):1:2, celestica:1:1 and ioport:0 "
              "are" );
}

TEST_F( RoutesFileTest, RefusesTwoRoutesOfOneBus ) {
   EXPECT_EQ( complaint( R"({ "bus": "celestica:1:1", "simulated": true },
                            { "bus": "celestica(0):1:0x1", "adapter": { "number": 1 } })" ),
              "/routes/1: a route of celestica:1:1, like /routes/0" );
}

TEST_F( RoutesFileTest, RefusesTwoBussesOnOneAdapter ) {
   EXPECT_EQ( complaint( R"({ "bus": "i2c:0", "adapter": { "name": "card" } },
                            { "bus": "i2c:1", "adapter": { "number": 1 } },
                            { "bus": "i2c:2", "adapter": { "name": "card" } })" ),
              "/routes/2: on the same adapter, like /routes/0" );
}

TEST_F( RoutesFileTest, RefusesPortsThatOverlapOrDontExist ) {
   const auto windows = [this]( const std::string &one, const std::string &other ) {
      return complaint( R"({ "bus": "ioport:0", "ports": )" + one + " }," +
                        R"({ "bus": "ioport:1", "ports": )" + other + " }" );
   };
   EXPECT_EQ( windows( R"({ "base": 512, "size": 16 })", R"({ "base": 527, "size": 1 })" ),
              "/routes/1: with some of the same ports, like /routes/0" );
   EXPECT_EQ( windows( R"({ "base": 512, "size": 16 })", R"({ "base": 528, "size": 1 })" ),
              "none" );
   EXPECT_EQ( windows( R"({ "base": 65535, "size": 1 })", R"({ "base": 65535, "size": 2 })" ),
              "/routes/1/ports: 2 ports from 0xffff on reach beyond the last, 0xffff" );
}

TEST_F( RoutesFileTest, RefusesChipsThatAreToldOfTwiceOrHaveNoAdapter ) {
   EXPECT_EQ( complaint( R"({ "bus": "i2c:0", "adapter": { "number": 1 },
                              "chips": [ { "address": 49 }, { "address": 49, "force": true } ] })" ),
              "/routes/0/chips/1: address 0x31 has an entry already" );
   EXPECT_EQ( complaint( R"({ "bus": "i2c:0", "simulated": true, "chips": [] })" ),
              "/routes/0/chips: only an adapter's route tells of chips" );
}

} // namespace

} // namespace BoardFilesTest
