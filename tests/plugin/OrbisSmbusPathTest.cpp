// The path from the server to a device: address fields, and the muxes that a batch sets and
// releases.
#include "OrbisGeneric/Components/Device.h"
#include "OrbisGeneric/Components/Mux.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/Ham/OrbisSmbusHam.h"
#include "OrbisGeneric/Topology.h"
#include "support/PluginFixture.h"

namespace {

using Words = std::vector<std::string>;

const char *const board =
   "[{'type':'SCD','ham':'OrbisSmbus','pci':4,'accelerators':[{'id':1,'busses':[{'id':2,'devices':["
   "{'did':100,'driver':'PCA9548','address':{'address':112}},{'did':20,'components':[{'uid':7}]}],"
   "'muxes':[{'did':100,'busses':[{'id':260,'devices':["
   "{'did':101,'driver':'PCA9548','address':{'address':113}},{'did':21}],"
   "'muxes':[{'did':101,'busses':[{'id':128,'devices':[{'did':22}]}]}]}]}]}]},"
   "{'id':130,'busses':[{'id':129,'devices':[{'did':23}]}]}]},"
   "{'type':'I2C','ham':'OrbisSmbus','bus':{'id':3,'devices':[{'did':24,'components':[{'uid':7}]}]}"
   "},"
   "{'type':'I2C','ham':'OrbisSmbus','simulated':true,'bus':{'id':5,'devices':[{'did':25}]}},"
   "{'type':'IOPort','ham':'OrbisSmbus','bus':{'id':6,'devices':[{'did':26}]}},"
   "{'type':'Celestica','ham':'OrbisSmbus','accelerators':[{'id':9,'busses':[{'id':8,'devices':["
   "{'did':27}]}]}]}]";

class OrbisSmbusPathTest : public PluginFixture {
 protected:
   OrbisSmbusPathTest() { connect( board ); }

   Ham::OrbisSmbusHam *hamFor( const std::string &members ) {
      Drivers::DriverArgs args;
      EXPECT_TRUE( args.parseJSON( json( "{'driver':'Dummy'," + members + "}" ) ) );
      return static_cast<Ham::OrbisSmbusHam *>( Ham::createHam( args ) );
   }
   Ham::OrbisSmbusHam *hamFor( unsigned did ) {
      return hamFor( "'did':" + std::to_string( did ) + ",'address':{'address':72}" );
   }
   // The request of a batch of one read, for a device without muxes on its path.
   std::string readOf( unsigned did ) {
      uint8_t byte;
      FakeServer::answersWith( { "x" } );
      EXPECT_EQ( hamFor( did )->read8( 0x10, &byte ), PL_STATUS_OK );
      return FakeServer::lastInWords().at( 0 );
   }
};

TEST_F( OrbisSmbusPathTest, ADeviceOnAnAcceleratorsBusNeedsNoMux ) {
   const auto *ham = hamFor( 20 );
   EXPECT_EQ( ham->prepareRequestCount_, 0u );
   EXPECT_TRUE( ham->muxes_.empty() );
   EXPECT_EQ( readOf( 20 ), "read 0x48 reg 0x10 bus 2 accel 1 size 1 master 2 pci 4 len 1" );
}

TEST_F( OrbisSmbusPathTest, EveryMediumHasItsMasterType ) {
   EXPECT_EQ( readOf( 24 ), "read 0x48 reg 0x10 bus 3 accel 0 size 1 master 1 pci 0 len 1" );
   EXPECT_EQ( readOf( 25 ), "read 0x48 reg 0x10 bus 5 accel 0 size 1 master 0 pci 0 len 1" );
   EXPECT_EQ( readOf( 26 ), "read 0x48 reg 0x10 bus 6 accel 0 size 1 master 3 pci 0 len 1" );
   EXPECT_EQ( readOf( 27 ), "read 0x48 reg 0x10 bus 8 accel 9 size 1 master 4 pci 0 len 1" );
}

TEST_F( OrbisSmbusPathTest, BusAndAcceleratorIdsAreCutToSevenBits ) {
   EXPECT_EQ( readOf( 23 ), "read 0x48 reg 0x10 bus 1 accel 2 size 1 master 2 pci 4 len 1" );
}

TEST_F( OrbisSmbusPathTest, TheAddressSizeIsAlwaysOne ) {
   const auto *ham = hamFor( "'did':20,'address':{'address':72,'addrSize':2,'readDelay':3}" );
   EXPECT_EQ( ham->address.addrSize, 1u );
   EXPECT_EQ( ham->address.readDelay, 3u );
}

TEST_F( OrbisSmbusPathTest, TheTopologysAcceleratorReplacesThatOfTheDevice ) {
   EXPECT_EQ( hamFor( "'did':20,'address':{'address':72,'accel':5}" )->address.accel, 1u );
   EXPECT_EQ( hamFor( "'did':24,'address':{'address':72,'accel':5}" )->address.accel, 5u );
}

TEST_F( OrbisSmbusPathTest, ABatchBehindTwoMuxesOpensTheOuterFirstAndClosesTheInnerFirst ) {
   auto *ham = hamFor( 22 );
   ASSERT_EQ( ham->muxes_.size(), 2u );
   EXPECT_EQ( ham->prepareRequestCount_, 2u );
   EXPECT_TRUE( TestHost::traced( 3, "Mux using device 101 with value 128" ) );
   EXPECT_TRUE( TestHost::traced( 3, "Mux using device 100 with value 260" ) );
   FakeServer::answersWith( { "", "", "\x42", "", "" } );
   uint8_t byte = 0;
   ASSERT_EQ( ham->read8( 0x10, &byte ), PL_STATUS_OK );
   EXPECT_EQ( byte, 0x42 );
   const std::string path = " bus 2 accel 1 size 1 master 2 pci 4 len ";
   EXPECT_EQ( FakeServer::lastInWords(),
              ( Words{ "write 0x70 reg 0x4" + path + "0", "write 0x71 reg 0x80" + path + "0",
                       "read 0x48 reg 0x10" + path + "1", "write 0x71 reg 0x0" + path + "0",
                       "write 0x70 reg 0x0" + path + "0" } ) );
   EXPECT_EQ( ham->getAddress(), 72 );
}

TEST_F( OrbisSmbusPathTest, EveryBatchSendsTheSelectionsOnce ) {
   auto *ham = hamFor( 22 );
   FakeServer::answersWith( { "", "", "\x42", "", "" } );
   uint8_t byte;
   for ( int i = 0; i < 3; ++i ) {
      EXPECT_EQ( ham->read8( 0x10, &byte ), PL_STATUS_OK );
      EXPECT_EQ( FakeServer::received.back().request_size(), 5 );
   }
}

TEST_F( OrbisSmbusPathTest, ASecondRunWithoutPrepareSendsTheReleasesTwice ) {
   auto *ham = hamFor( 22 );
   ham->prepare();
   ham->addRead8( 0x10 );
   EXPECT_EQ( ham->execute(), PL_STATUS_OK );
   EXPECT_EQ( ham->execute(), PL_STATUS_OK );
   EXPECT_EQ( FakeServer::received.back().request_size(), 7 );
}

TEST_F( OrbisSmbusPathTest, AnAnswerWithAResponseMissingIsStatus6 ) {
   auto *ham = hamFor( 22 );
   FakeServer::answersWith( { "", "", "\x42", "" } );
   uint8_t byte = 1;
   EXPECT_EQ( ham->read8( 0x10, &byte ), 6 );
   EXPECT_EQ( byte, 1 );
   EXPECT_TRUE( TestHost::traced( 3, "execute: invalid number of response, expecting 5 not 4" ) );
   EXPECT_EQ( ham->response_.response_size(), 4 ); // the answer is kept
}

TEST_F( OrbisSmbusPathTest, AnAnswerWithAnExtraResponseIsStatus6 ) {
   auto *ham = hamFor( 20 );
   FakeServer::answersWith( { "\x42", "" } );
   uint8_t byte = 1;
   EXPECT_EQ( ham->read8( 0x10, &byte ), 6 );
   EXPECT_EQ( byte, 1 );
   EXPECT_TRUE( TestHost::traced( 3, "execute: invalid number of response, expecting 1 not 2" ) );
}

TEST_F( OrbisSmbusPathTest, AComponentIsFoundInTheFirstDeviceThatHasIt ) {
   const auto *ham = hamFor( "'did':24,'uid':7,'address':{'address':72}" );
   EXPECT_EQ( ham->masterType, Smbus::MASTER_SCD );
   EXPECT_EQ( ham->address.bus, 2u );
}

TEST_F( OrbisSmbusPathTest, AComponentAfterTheDeviceOfTheRequestedIdIsFound ) {
   load( "[{'type':'IOPort','ham':'OrbisSmbus','bus':{'id':6,'devices':[{'did':26}]}},"
         "{'type':'Celestica','ham':'OrbisSmbus','accelerators':[{'id':9,'busses':[{'id':8,"
         "'devices':[{'did':27,'components':[{'uid':9}]}]}]}]}]" );
   const auto *ham = hamFor( "'did':26,'uid':9,'address':{'address':72}" );
   EXPECT_EQ( ham->masterType, Smbus::MASTER_CELESTICA );
}

TEST_F( OrbisSmbusPathTest, TheSearchContinuesAfterACelesticaMedium ) {
   load( "[{'type':'Celestica','ham':'OrbisSmbus'},"
         "{'type':'I2C','ham':'OrbisSmbus','bus':{'id':3,'devices':[{'did':28}]}}]" );
   const auto *ham = hamFor( 28 );
   ASSERT_NE( ham, nullptr );
   EXPECT_EQ( ham->masterType, Smbus::MASTER_I2C );
}

TEST_F( OrbisSmbusPathTest, AfterASecondInitThereIsOneSelectionForEachMux ) {
   auto *ham = hamFor( 22 );
   ham->response_.add_response();
   ham->init();
   EXPECT_EQ( ham->prepareRequestCount_, 2u );
   EXPECT_EQ( ham->request_.request_size(), 2 );
   EXPECT_EQ( ham->response_.response_size(), 0 );
}

TEST_F( OrbisSmbusPathTest, NoHamForADeviceThatIsNotInTheTopology ) {
   EXPECT_EQ( hamFor( 99 ), nullptr );
   Drivers::DriverArgs args;
   args.uid = 12345;
   EXPECT_EQ( Ham::OrbisSmbusHam::create( *Topology::_topology, args ), nullptr );
}

TEST_F( OrbisSmbusPathTest, MuxChipsAreSharedBetweenPaths ) {
   const auto *deep = hamFor( 22 ), *shallow = hamFor( 21 );
   ASSERT_EQ( shallow->muxes_.size(), 1u );
   EXPECT_EQ( shallow->muxes_[0]->device(), deep->muxes_[0]->device() );
   EXPECT_EQ( Component::DeviceBase::devices.count( 100 ), 1u );
}

TEST_F( OrbisSmbusPathTest, AMuxChipMustBeDeclaredInline ) {
   const std::string text =
      "[{'type':'I2C','ham':'OrbisSmbus','bus':{'id':0,'devices':[{'did':100}],"
      "'muxes':[{'did':100,'busses':[{'id':1,'devices':[{'did':20}]}]}]}}]";
   load( text );
   EXPECT_DEATH( hamFor( 20 ), "3 Device 100 isn't declared inline\n(.|\n)*"
                               "OrbisGeneric/Ham/OrbisSmbusHam\\.cpp.*Assertion "
                               "`topoDev->args' failed" );
}

TEST_F( OrbisSmbusPathTest, AMuxChipThatIsNotADeviceStopsTheProcess ) {
   load( "[{'type':'I2C','ham':'OrbisSmbus','bus':{'id':0,"
         "'muxes':[{'did':100,'busses':[{'id':1,'devices':[{'did':20}]}]}]}}]" );
   EXPECT_DEATH( hamFor( 20 ), "Assertion `topoDev' failed" );
}

TEST_F( OrbisSmbusPathTest, AMuxChipWhoseDriverCantBeMadeStopsTheProcess ) {
   load( "[{'type':'I2C','ham':'OrbisSmbus','bus':{'id':0,'devices':["
         "{'did':100,'driver':'Nobody','address':{'address':112}}],"
         "'muxes':[{'did':100,'busses':[{'id':1,'devices':[{'did':20}]}]}]}}]" );
   EXPECT_DEATH( hamFor( 20 ), "Assertion `muxDevice' failed" );
}

} // namespace
