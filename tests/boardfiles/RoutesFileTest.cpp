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
   RoutesFile load( const std::string &routes ) {
      return loadRoutes( folder.write( "routes.json", "{ \"routes\": [" + routes + "] }" ) );
   }
   // What is said of them, without the file's name.
   std::string complaint( const std::string &routes ) {
      try {
         load( routes );
         return "none";
      } catch ( const BoardError &error ) {
         std::string text = error.what();
         const std::string file = folder.file( "routes.json:" );
         for ( size_t at; ( at = text.find( file ) ) != text.npos; )
            text.erase( at, file.size() );
         return text;
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
   const std::vector<Route> &routes = file.routes;
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

TEST_F( RoutesFileTest, ABusMayHaveAClockOfItsOwn ) {
   const auto file = load( R"(
      { "bus": "scd(4):1:2", "adapter": { "number": 1 }, "clock": 400000 },
      { "bus": "i2c:0", "adapter": { "number": 2 } } )" );
   EXPECT_EQ( file.routes[0].clock, 400'000u );
   EXPECT_EQ( file.routes[1].clock, std::nullopt );
}

TEST_F( RoutesFileTest, PortsHaveNoClock ) {
   EXPECT_EQ( complaint( R"({ "bus": "ioport:0", "ports": { "base": 512, "size": 16 },
                              "clock": 400000 })" ),
              "2:40: I/O ports have no clock" );
}

TEST_F( RoutesFileTest, ReadsTheExampleInTheDocuments ) {
   std::ifstream stream( DOCS "/real-board.md" );
   std::string text{ std::istreambuf_iterator<char>( stream ), {} };
   const size_t start = text.find( "```json\n" ) + 8;
   const auto file = loadRoutes(
      folder.write( "example.json", text.substr( start, text.find( "```", start ) - start ) ) );
   EXPECT_EQ( file.routes.size(), 6u );
}

TEST_F( RoutesFileTest, RefusesWhatTheSchemaDoesntHave ) {
   EXPECT_EQ( complaint( R"({ "bus": "i2c:0" })" ),
              "1:14: needs exactly one of \"simulated\", \"adapter\", \"ports\", has none" );
   EXPECT_EQ( complaint( R"({ "bus": "i2c:0", "simulated": true, "adapter": { "number": 1 } })" ),
              "1:14: needs exactly one of \"simulated\", \"adapter\", \"ports\", has several" );
   EXPECT_EQ( complaint( R"({ "bus": "i2c:0", "adapter": {} })" ),
              "1:43: needs exactly one of \"number\", \"name\", \"path\", has none" );
   EXPECT_EQ( complaint( R"({ "simulated": true })" ), "1:14: \"bus\" is missing" );
   EXPECT_EQ( complaint( R"({ "bus": "i2c:0", "simulated": true, "pec": 1 })" ),
              "1:51: unknown key \"pec\"" );
   EXPECT_EQ(
      complaint(
         R"({ "bus": "i2c:0", "adapter": { "number": 1 }, "chips": [ { "address": 128 } ] })" ),
      "1:84: 128 is above 127" );
}

TEST_F( RoutesFileTest, RefusesWhatIsNoBus ) {
   EXPECT_EQ(
      complaint( R"({ "bus": "scd:1:2", "simulated": true })" ),
      "1:23: \"scd:1:2\" is not a bus; write i2c:0, scd(4):1:2, celestica:1:1 or ioport:0" );
}

TEST_F( RoutesFileTest, RefusesTwoRoutesOfOneBus ) {
   EXPECT_EQ( complaint( R"({ "bus": "celestica:1:1", "simulated": true },
                            { "bus": "celestica(0):1:0x1", "adapter": { "number": 1 } })" ),
              "2:29: the same bus, celestica:1:1, as the route at 1:14" );
}

TEST_F( RoutesFileTest, RefusesTwoBussesOnOneAdapter ) {
   EXPECT_EQ( complaint( R"({ "bus": "i2c:0", "adapter": { "name": "card" } },
                            { "bus": "i2c:1", "adapter": { "number": 1 } },
                            { "bus": "i2c:2", "adapter": { "name": "card" } })" ),
              "3:29: the same adapter as the route at 1:14" );
}

TEST_F( RoutesFileTest, RefusesPortsThatOverlapOrDontExist ) {
   const auto windows = [this]( const std::string &one, const std::string &other ) {
      return complaint( R"({ "bus": "ioport:0", "ports": )" + one + " }," +
                        R"({ "bus": "ioport:1", "ports": )" + other + " }" );
   };
   EXPECT_EQ( windows( R"({ "base": 512, "size": 16 })", R"({ "base": 527, "size": 1 })" ),
              "1:74: some of the same ports as the route at 1:14" );
   EXPECT_EQ( windows( R"({ "base": 512, "size": 16 })", R"({ "base": 528, "size": 1 })" ),
              "none" );
   EXPECT_EQ( windows( R"({ "base": 1, "size": 1 })", R"({ "base": 65535, "size": 2 })" ),
              "1:101: 2 ports from 0xffff on go beyond the last, 0xffff" );
}

TEST_F( RoutesFileTest, RefusesChipsThatAreThereTwiceOrHaveNoAdapter ) {
   EXPECT_EQ( complaint( R"({ "bus": "i2c:0", "adapter": { "number": 1 },
                              "chips": [ { "address": 49 }, { "address": 49, "force": true } ] })" ),
              "2:61: address 0x31 has an entry already" );
   EXPECT_EQ( complaint( R"({ "bus": "i2c:0", "simulated": true, "chips": [] })" ),
              "1:60: only the route of an adapter can have chips" );
}

} // namespace

} // namespace BoardFilesTest
