// Finds the access method for a component or a device.
#include "OrbisGeneric/Ham/SearchVisitor.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/Ham/Ham.h"
#include "OrbisGeneric/Ham/OrbisSmbusHam.h"
#include "support/PluginFixture.h"

namespace {

class SearchVisitorTest : public PluginFixture {
 protected:
   SearchVisitorTest() {
      load( "[{'type':'SCD','ham':'first','pci':43981,'accelerators':[{'id':1,'busses':[{'id':2,"
            "'devices':[{'did':50,'components':[{'uid':500}]}],"
            "'muxes':[{'did':50,'busses':[{'id':4,'devices':[{'did':51,'components':"
            "[{'uid':500},{'uid':510}]}]}]}]}]}]},"
            "{'type':'I2C','ham':'second','bus':{'id':7,'devices':[{'did':52}]}},"
            "{'type':'IOPort','ham':'third','bus':{'id':0,'devices':[{'did':53}]}},"
            "{'type':'Celestica','ham':'fourth','accelerators':[{'id':3,'busses':[{'id':6,"
            "'devices':[{'did':54}]}]}]}]" );
      TestHost::traces.clear();
   }
   Ham::SearchVisitor search( uint32_t uid, uint32_t did ) {
      Ham::SearchVisitor visitor( uid, did );
      Topology::_topology->accept( &visitor );
      return visitor;
   }
};

TEST_F( SearchVisitorTest, TheFirstComponentOfTheWalkIsFoundInAnyDevice ) {
   const auto found = search( 500, 99 );
   ASSERT_TRUE( found.found );
   EXPECT_EQ( found.device->did, 50u );
   EXPECT_EQ( found.ham, "first" );
}

TEST_F( SearchVisitorTest, WithAComponentADeviceAloneDoesNotMatch ) {
   EXPECT_FALSE( search( 999, 50 ).found );
}

TEST_F( SearchVisitorTest, WithoutAComponentTheDeviceIsMatched ) {
   EXPECT_EQ( search( Drivers::noComponent, 52 ).ham, "second" );
   EXPECT_EQ( search( Drivers::noComponent, 53 ).ham, "third" );
   EXPECT_EQ( search( Drivers::noComponent, 54 ).ham, "fourth" );
   EXPECT_FALSE( search( Drivers::noComponent, 99 ).found );
}

TEST_F( SearchVisitorTest, ContinuesAfterACelesticaMedium ) {
   load( "[{'type':'Celestica','ham':'first'},"
         "{'type':'I2C','ham':'second','bus':{'id':7,'devices':[{'did':52}]}}]" );
   EXPECT_EQ( search( Drivers::noComponent, 52 ).ham, "second" );
}

TEST_F( SearchVisitorTest, TracesTheWayUp ) {
   search( 510, 0 );
   EXPECT_EQ( TestHost::tracedAt( 2 ),
              ( std::vector<std::string>{
                 "Component 510 found in tree", "Device 51 contain the component", "BusId 4",
                 "Mux using device 50", "BusId 2", "AccelId 1", "SCD 0 0000ABCD" } ) );
   TestHost::traces.clear();
   search( Drivers::noComponent, 52 );
   EXPECT_EQ(
      TestHost::tracedAt( 2 ),
      ( std::vector<std::string>{ "Device 52 contain the component", "BusId 7", "I2C bus 7" } ) );
   TestHost::traces.clear();
   search( Drivers::noComponent, 53 );
   EXPECT_EQ( TestHost::tracedAt( 2 ).back(), "IOPort" );
   search( Drivers::noComponent, 54 );
   EXPECT_EQ( TestHost::tracedAt( 2 ).back(), "Celestica" );
}

Drivers::DriverArgs argsFor( uint32_t uid, uint32_t did ) {
   Drivers::DriverArgs args;
   args.uid = uid;
   args.did = did;
   return args;
}

TEST_F( SearchVisitorTest, CreateHamNamesWhatItCouldNotFind ) {
   EXPECT_EQ( Ham::createHam( argsFor( Drivers::noComponent, 99 ) ), nullptr );
   EXPECT_EQ(
      TestHost::tracedAt( 0 ),
      ( std::vector<std::string>{ "looking for component 4294967295 of device 99 in topology",
                                  "could not find component uid -1 in topology" } ) );
}

TEST_F( SearchVisitorTest, CreateHamNamesAnUnknownAccessMethod ) {
   EXPECT_EQ( Ham::createHam( argsFor( Drivers::noComponent, 52 ) ), nullptr );
   EXPECT_EQ(
      TestHost::tracedAt( 0 ),
      ( std::vector<std::string>{ "looking for component 4294967295 of device 52 in topology",
                                  "creating second HAM using topology information",
                                  "Couldn't find HAM second", "failed to create HAM" } ) );
}

TEST_F( SearchVisitorTest, CreateHamStopsTheProcessWithoutATopology ) {
   Topology::_topology.reset();
   EXPECT_DEATH( Ham::createHam( argsFor( 0, 0 ) ),
                 "OrbisGeneric/Ham/Ham\\.cpp:[0-9]+: .*createHam.*Assertion `topology' failed" );
}

struct InitialisedHam : Ham::OrbisSmbusHam {
   void init() override { ++inits; }
   int inits = 0;
};

TEST_F( SearchVisitorTest, CreateCallsTheFactoryAndInitialisesTheMethodOnce ) {
   InitialisedHam made;
   Ham::hams["test"] = [&]( auto &, auto & ) { return &made; };
   EXPECT_EQ( Ham::Ham::create( "test", *Topology::_topology, argsFor( 0, 0 ) ), &made );
   EXPECT_EQ( made.inits, 1 );
   EXPECT_EQ( TestHost::tracedAt( 3 )[1], "calling test factory function" );
   EXPECT_EQ( TestHost::tracedAt( 3 )[2], "ham initialisation" );
   EXPECT_TRUE( TestHost::tracedAt( 3 )[0].starts_with( "looking up for test in 0x" ) );
   Ham::hams.erase( "test" );
}

TEST_F( SearchVisitorTest, CreateReportsAFactoryThatMakesNothing ) {
   Ham::hams["test"] = []( auto &, auto & ) { return nullptr; };
   EXPECT_EQ( Ham::Ham::create( "test", *Topology::_topology, argsFor( 0, 0 ) ), nullptr );
   EXPECT_TRUE( TestHost::traced( 0, "Factory function returned, couldn't create HAM test" ) );
   Ham::hams.erase( "test" );
}

} // namespace
