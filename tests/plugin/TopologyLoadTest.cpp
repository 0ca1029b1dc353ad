#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/Topology.h"
#include "support/PluginFixture.h"

#include <rapidjson/document.h>

namespace {

using namespace std::string_literals;
using Topology::_topology;

class TopologyLoadTest : public PluginFixture {};

// The only bus of the first medium.
const Topology::Bus &firstBus() {
   return *std::dynamic_pointer_cast<Topology::I2C>( _topology->media.at( 0 ) )->bus;
}

TEST_F( TopologyLoadTest, AnEmptyArrayHasNoMedia ) {
   load( "[]" );
   ASSERT_NE( _topology, nullptr );
   EXPECT_TRUE( _topology->media.empty() );
}

TEST_F( TopologyLoadTest, AnEmptyTextIsASyntaxErrorEvenAtTheFirstLoad ) {
   EXPECT_EQ( Topology::loadTopology( "" ), 3 );
   EXPECT_TRUE(
      TestHost::traced( 2, "failed to load topology from json: The document is empty. offset 0" ) );
}

TEST_F( TopologyLoadTest, ABusIdIsReadSignedAndStoredUnsigned ) {
   load( "[{'type':'I2C','ham':'C','bus':{'id':-1}}]" );
   EXPECT_EQ( firstBus().id, 0xFFFFFFFFu );
   EXPECT_DEATH( load( "[{'type':'I2C','ham':'C','bus':{'id':3000000000}}]" ), "Assertion" );
}

TEST_F( TopologyLoadTest, BuildsEveryKindOfNode ) {
   load( "[{'type':'SCD','ham':'A','pci':5,'accelerators':[{'id':3,'busses':[{'id':2}]}]},"
         "{'type':'Celestica','ham':'B','accelerators':[{'id':4}]},"
         "{'type':'I2C','ham':'C','simulated':true,'bus':{'id':7,'devices':[{'did':9,'components':"
         "[{'uid':1},{'uid':2}]}],'muxes':[{'did':9,'busses':[{'id':1}]}]}},"
         "{'type':'IOPort','ham':'D','bus':{'id':0}}]" );
   ASSERT_EQ( _topology->media.size(), 4u );
   const auto scd = std::dynamic_pointer_cast<Topology::SCD>( _topology->media[0] );
   ASSERT_NE( scd, nullptr );
   EXPECT_EQ( scd->ham, "A" );
   EXPECT_EQ( scd->unused, 0u );
   EXPECT_EQ( scd->pci, 5u );
   EXPECT_EQ( scd->accelerators.at( 3 )->id, 3u );
   EXPECT_EQ( scd->accelerators.at( 3 )->busses.at( 2 )->id, 2u );
   const auto celestica = std::dynamic_pointer_cast<Topology::Celestica>( _topology->media[1] );
   ASSERT_NE( celestica, nullptr );
   EXPECT_EQ( celestica->accelerators.at( 4 )->id, 4u );
   const auto i2c = std::dynamic_pointer_cast<Topology::I2C>( _topology->media[2] );
   ASSERT_NE( i2c, nullptr );
   EXPECT_TRUE( i2c->simulated );
   EXPECT_EQ( i2c->bus->id, 7u );
   EXPECT_EQ( i2c->bus->devices.at( 0 )->did, 9u );
   EXPECT_EQ( i2c->bus->devices[0]->args, nullptr );
   EXPECT_EQ( i2c->bus->devices[0]->components.at( 1 )->uid, 2u );
   EXPECT_EQ( i2c->bus->muxes.at( 0 )->busses.at( 1 )->id, 1u );
   const auto ioPort = std::dynamic_pointer_cast<Topology::IOPort>( _topology->media[3] );
   ASSERT_NE( ioPort, nullptr );
   EXPECT_EQ( ioPort->ham, "D" );
   EXPECT_EQ( ioPort->bus->id, 0u );
}

TEST_F( TopologyLoadTest, AnI2CMediumIsRealUnlessItSaysOtherwise ) {
   load( i2cTopology( "" ) );
   EXPECT_FALSE( std::dynamic_pointer_cast<Topology::I2C>( _topology->media[0] )->simulated );
}

TEST_F( TopologyLoadTest, RecognisesTheSameTextAndKeepsItsNodes ) {
   load( i2cTopology( "{'did':1}" ) );
   const auto *tree = _topology.get();
   const auto *device = Topology::findDevice( 1 );
   TestHost::traces.clear();
   load( i2cTopology( "{'did':1}" ) );
   EXPECT_EQ( _topology.get(), tree );
   EXPECT_TRUE(
      TestHost::traced( 2, "topology is the same as the previously loaded one (using it)" ) );
   EXPECT_EQ( Topology::findDevice( 1 ), device );
}

TEST_F( TopologyLoadTest, AnotherTextReplacesTreeAndLabels ) {
   load( i2cTopology( "{'did':1,'label':'Old'}" ) );
   load( i2cTopology( "{'did':2,'label':'New'}" ) );
   EXPECT_EQ( Topology::getDeviceByLabel( "Old" ), nullptr );
   EXPECT_EQ( Topology::getDeviceByLabel( "New" )->did, 2u );
   EXPECT_EQ( Topology::findDevice( 1 ), nullptr );
   EXPECT_TRUE( TestHost::traced( 2, "loading topology json" ) );
}

TEST_F( TopologyLoadTest, ASyntaxErrorReturns3AndKeepsTreeAndText ) {
   load( "[]" );
   const auto *tree = _topology.get();
   EXPECT_EQ( Topology::loadTopology( "[ 1, " ), 3 );
   EXPECT_TRUE(
      TestHost::traced( 2, "failed to load topology from json: Invalid value. offset 5" ) );
   EXPECT_EQ( _topology.get(), tree );
   EXPECT_EQ( Topology::_topology_json, "[]" );
}

TEST_F( TopologyLoadTest, TheLaterOfTwoDevicesWithOneLabelWins ) {
   load( i2cTopology( "{'did':1,'label':'Same'},{'did':2,'label':'Same'}" ) );
   EXPECT_EQ( Topology::getDeviceByLabel( "Same" )->did, 2u );
}

TEST_F( TopologyLoadTest, AMuxKeepsTheLaterOfTwoBussesWithOneId ) {
   load( "[{'type':'I2C','ham':'A','bus':{'id':0,'muxes':[{'did':1,'busses':["
         "{'id':4,'devices':[{'did':10}]},{'id':4,'devices':[{'did':11}]}]}]}}]" );
   const auto &mux = *firstBus().muxes.at( 0 );
   ASSERT_EQ( mux.busses.size(), 1u );
   EXPECT_EQ( mux.busses.at( 4 )->devices.at( 0 )->did, 11u );
}

TEST_F( TopologyLoadTest, ADeviceWithADriverHasItsArguments ) {
   load( i2cTopology( "{'did':1,'driver':'LM75','address':{'address':72}}" ) );
   ASSERT_NE( firstBus().devices[0]->args, nullptr );
   EXPECT_EQ( firstBus().devices[0]->args->driver, "LM75" );
   EXPECT_EQ( firstBus().devices[0]->args->address.address, 72u );
   EXPECT_EQ( firstBus().devices[0]->args->jsonText, nullptr );
}

TEST_F( TopologyLoadTest, UnknownKeysAreIgnored ) {
   load( "[{'type':'IOPort','ham':'A','x':1,'bus':{'id':0,'y':[],'devices':[{'did':1,'z':{}}]}}]" );
   EXPECT_NE( Topology::findDevice( 1 ), nullptr );
}

struct BadTopology {
   std::string text;
   std::string assertion; // text of the failed condition, not a regular expression
};

std::ostream &operator<<( std::ostream &out, const BadTopology &bad ) { return out << bad.text; }

class BadTopologyTest : public PluginFixture, public ::testing::WithParamInterface<BadTopology> {};

TEST_P( BadTopologyTest, StopsTheProcessNamingTheCondition ) {
   EXPECT_DEATH(
      Topology::loadTopology( json( GetParam().text ) ),
      ::testing::ContainsRegex( "OrbisGeneric/Topology\\.cpp:[0-9]+: .*fromJSON.*Assertion" ) );
   EXPECT_DEATH( Topology::loadTopology( json( GetParam().text ) ),
                 ::testing::HasSubstr( "Assertion `" + GetParam().assertion + "' failed" ) );
}

std::string scd( const std::string &accelerators ) {
   return "[{'type':'SCD','ham':'A','pci':1,'accelerators':" + accelerators + "}]";
}

std::string celestica( const std::string &accelerators ) {
   return "[{'type':'Celestica','ham':'A','accelerators':" + accelerators + "}]";
}

std::string bus( const std::string &members ) {
   return "[{'type':'IOPort','ham':'A','bus':{" + members + "}}]";
}

INSTANTIATE_TEST_SUITE_P(
   Structure, BadTopologyTest,
   ::testing::Values(
      BadTopology{ "{}", "json.IsArray()" }, BadTopology{ "[1]", "it->IsObject()" },
      BadTopology{ "[{'ham':'A'}]", R"(it->HasMember( "type" ))" },
      BadTopology{ "[{'type':'SCD'}]", R"(it->HasMember( "ham" ))" },
      BadTopology{ "[{'type':'scd','ham':'A'}]", R"(false && "Unknown type")" },
      BadTopology{ "[{'type':'SCD','ham':'A'}]", R"(json.HasMember( "pci" ))" },
      BadTopology{ scd( "{}" ), "accels.IsArray()" },
      BadTopology{ scd( "[{'id':1},{'id':1}]" ),
                   "scd->accelerators.find( accel->id ) == scd->accelerators.end()" },
      BadTopology{ celestica( "1" ), "accels.IsArray()" },
      BadTopology{ celestica( "[{'id':1},{'id':1}]" ),
                   "cel->accelerators.find( accel->id ) == cel->accelerators.end()" },
      BadTopology{ scd( "[1]" ), "json.IsObject()" },
      BadTopology{ scd( "[{}]" ), R"(json.HasMember( "id" ))" },
      BadTopology{ scd( "[{'id':1,'busses':{}}]" ), "busses.IsArray()" },
      BadTopology{ scd( "[{'id':1,'busses':[{'id':2},{'id':2}]}]" ),
                   "accel->busses.find( bus->id ) == accel->busses.end()" },
      BadTopology{ "[{'type':'I2C','ham':'A'}]", R"(json.HasMember( "bus" ))" },
      BadTopology{ "[{'type':'IOPort','ham':'A'}]", R"(json.HasMember( "bus" ))" },
      BadTopology{ "[{'type':'IOPort','ham':'A','bus':1}]", "json.IsObject()" },
      BadTopology{ bus( "" ), R"(json.HasMember( "id" ))" },
      BadTopology{ bus( "'id':0,'devices':[1]" ), "it->IsObject()" },
      BadTopology{ bus( "'id':0,'devices':[{}]" ), R"(json.HasMember( "did" ))" },
      BadTopology{ bus( "'id':0,'devices':[{'did':1,'components':[1]}]" ), "it->IsObject()" },
      BadTopology{ bus( "'id':0,'devices':[{'did':1,'components':[{}]}]" ),
                   R"(json.HasMember( "uid" ))" },
      BadTopology{ bus( "'id':0,'muxes':[1]" ), "it->IsObject()" },
      BadTopology{ bus( "'id':0,'muxes':[{}]" ), R"(json.HasMember( "did" ))" },
      BadTopology{ bus( "'id':0,'muxes':[{'did':1,'busses':[1]}]" ), "it->IsObject()" } ) );

TEST_F( TopologyLoadTest, AWrongTypeIsTheJsonLibrarysOwnAssertion ) {
   EXPECT_DEATH( Topology::loadTopology( json( bus( "'id':'0'" ) ) ), "rapidjson.*Assertion" );
   EXPECT_DEATH( Topology::loadTopology( json( bus( "'id':0,'devices':[{'did':-1}]" ) ) ),
                 "rapidjson.*Assertion" );
   EXPECT_DEATH(
      Topology::loadTopology( json( "[{'type':'I2C','ham':'A','bus':{'id':0},'simulated':1}]" ) ),
      "rapidjson.*GetBool.*Assertion" );
}

} // namespace
