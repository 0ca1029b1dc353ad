#include "OrbisGeneric/TopologyVisitor.h"
#include "support/PluginFixture.h"

namespace {

// Records every visit. Returns false at the nodes where the walk is to stop.
class Recorder : public Topology::TopologyVisitor {
 public:
   explicit Recorder( std::string stopAt = "" ) : stopAt_( std::move( stopAt ) ) {}
   std::string path;

   bool visit( Topology::Component const *c ) override { return note( "component", c->uid ); }
   bool visit( Topology::Device const *d ) override { return note( "device", d->did ); }
   bool visit( Topology::Mux const *m ) override { return note( "mux", m->did ); }
   bool visit( Topology::Bus const *b ) override { return note( "bus", b->id ); }
   bool visit( Topology::Accelerator const *a ) override { return note( "accel", a->id ); }
   bool visit( Topology::SCD const *s ) override { return note( "scd", s->pci ); }
   bool visit( Topology::I2C const * ) override { return note( "i2c", 0 ); }
   bool visit( Topology::IOPort const * ) override { return note( "ioport", 0 ); }
   bool visit( Topology::Celestica const * ) override { return note( "celestica", 0 ); }
   bool visit( Topology::Topology const * ) override { return note( "topology", 0 ); }

 private:
   bool note( const char *kind, uint32_t id ) {
      const std::string name = kind + std::to_string( id );
      path += ( path.empty() ? "" : " " ) + name;
      return name != stopAt_;
   }
   std::string stopAt_;
};

class TopologyWalkTest : public PluginFixture {
 protected:
   TopologyWalkTest() {
      load( "[{'type':'SCD','ham':'A','pci':9,'accelerators':["
            "{'id':2,'busses':[{'id':20}]},"
            "{'id':1,'busses':[{'id':11},{'id':10,"
            "'muxes':[{'did':3,'busses':[{'id':4,'devices':[{'did':5}]},"
            "{'id':2,'devices':[{'did':6,'components':[{'uid':60},{'uid':61}]},{'did':7}]}]}],"
            "'devices':[{'did':3}]}]}]},"
            "{'type':'I2C','ham':'A','bus':{'id':30,'devices':[{'did':8},{'did':7}]}},"
            "{'type':'IOPort','ham':'A','bus':{'id':31}},"
            "{'type':'Celestica','ham':'A','accelerators':[{'id':4,'busses':[{'id':40,"
            "'devices':[{'did':41}]}]}]}]" );
   }

   bool walk( Topology::TopologyVisitor &visitor ) {
      return Topology::_topology->accept( &visitor );
   }
};

TEST_F( TopologyWalkTest, VisitsEveryNodeAfterItsDescendantsDevicesBeforeMuxesIdsAscending ) {
   Recorder recorder;
   EXPECT_TRUE( walk( recorder ) );
   EXPECT_EQ( recorder.path,
              "device3 component60 component61 device6 device7 bus2 device5 bus4 mux3 bus10 bus11 "
              "accel1 bus20 accel2 scd9 device8 device7 bus30 i2c0 bus31 ioport0 device41 bus40 "
              "accel4 celestica0 topology0" );
}

TEST_F( TopologyWalkTest, AStopAtAComponentVisitsOnlyItsAncestorsOnceEach ) {
   Recorder recorder( "component60" );
   EXPECT_FALSE( walk( recorder ) );
   EXPECT_EQ( recorder.path, "device3 component60 device6 bus2 mux3 bus10 accel1 scd9 topology0" );
}

TEST_F( TopologyWalkTest, AStopBelowAnI2CMediumEndsAtTheTopology ) {
   Recorder recorder( "device8" );
   EXPECT_FALSE( walk( recorder ) );
   EXPECT_TRUE( recorder.path.ends_with( "scd9 device8 bus30 i2c0 topology0" ) );
}

TEST_F( TopologyWalkTest, AStopBelowAnIOPortMediumEndsAtTheTopology ) {
   Recorder recorder( "bus31" );
   EXPECT_FALSE( walk( recorder ) );
   EXPECT_TRUE( recorder.path.ends_with( "i2c0 bus31 ioport0 topology0" ) );
}

TEST_F( TopologyWalkTest, AStopBelowACelesticaMediumEndsAtTheTopology ) {
   Recorder recorder( "device41" );
   EXPECT_FALSE( walk( recorder ) );
   EXPECT_TRUE( recorder.path.ends_with( "device41 bus40 accel4 celestica0 topology0" ) );
}

TEST_F( TopologyWalkTest, AWalkWithoutAStopReturnsTheTopologysResult ) {
   Recorder recorder( "topology0" );
   EXPECT_FALSE( walk( recorder ) );
}

TEST_F( TopologyWalkTest, AVisitorWithoutOverridesNeverStops ) {
   Topology::TopologyVisitor visitor;
   EXPECT_TRUE( Topology::_topology->accept( &visitor ) );
}

TEST_F( TopologyWalkTest, FindsTheFirstDeviceOfTheWalk ) {
   TestHost::traces.clear();
   const auto *device = Topology::findDevice( 7 );
   ASSERT_NE( device, nullptr );
   const auto &i2c = dynamic_cast<Topology::I2C &>( *Topology::_topology->media[1] );
   EXPECT_NE( device, i2c.bus->devices[1].get() );
   EXPECT_TRUE( TestHost::traced( 2, "Device 7 found in topology" ) );
}

TEST_F( TopologyWalkTest, FindsDevicesBeforeThoseBehindTheMuxesOfTheirBus ) {
   load( "[{'type':'I2C','ham':'h','bus':{'id':0,'muxes':[{'did':9,'busses':[{'id':1,"
         "'devices':[{'did':3}]}]}],'devices':[{'did':2},{'did':3}]}}]" );
   const auto &i2c = dynamic_cast<Topology::I2C &>( *Topology::_topology->media[0] );
   EXPECT_EQ( Topology::findDevice( 3 ), i2c.bus->devices[1].get() );
}

TEST_F( TopologyWalkTest, ASearchReportsItsResult ) {
   Topology::SearchDeviceVisitor search( 7 ), other( 99 );
   walk( search );
   EXPECT_TRUE( search.found );
   EXPECT_EQ( search.device, Topology::findDevice( 7 ) );
   walk( other );
   EXPECT_FALSE( other.found );
   EXPECT_EQ( other.device, nullptr );
}

TEST_F( TopologyWalkTest, FindsNothingForAnIdThatIsNotInTheTree ) {
   EXPECT_EQ( Topology::findDevice( 99 ), nullptr );
}

TEST_F( TopologyWalkTest, AnUnknownOrEmptyLabelOrOneOfAnotherCaseFindsNothing ) {
   load( i2cTopology( "{'did':1,'label':'Cpld'}" ) );
   EXPECT_EQ( Topology::getDeviceByLabel( "Cpld" )->did, 1u );
   EXPECT_EQ( Topology::getDeviceByLabel( "cpld" ), nullptr );
   EXPECT_EQ( Topology::getDeviceByLabel( "Other" ), nullptr );
   EXPECT_EQ( Topology::getDeviceByLabel( "" ), nullptr );
}

TEST_F( TopologyWalkTest, ADeviceObjectStartsWithABrace ) {
   EXPECT_TRUE( Topology::isDeviceObject( "{" ) );
   EXPECT_FALSE( Topology::isDeviceObject( " {" ) );
   EXPECT_FALSE( Topology::isDeviceObject( "Cpld" ) );
   EXPECT_FALSE( Topology::isDeviceObject( "" ) );
}

} // namespace
