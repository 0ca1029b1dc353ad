// pl_smbus_add with the label of a topology device.
#include "OrbisGeneric/Components/Device.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/Topology.h"
#include "support/FakeServer.h"
#include "support/PluginFixture.h"

namespace {

class ProxyByLabelTest : public PluginFixture {
 protected:
   ProxyByLabelTest() {
      connect( i2cTopology( "{'did':2,'label':'Bare','address':{'address':80}},"
                            "{'did':3,'label':'Named','driver':'LM75','address':{'address':9}}" ) );
   }
};

TEST_F( ProxyByLabelTest, ALabelGivesItsDeviceTheProxyDriver ) {
   pl_smbus *proxy = pl_smbus_add( "Named", 17 );
   ASSERT_NE( proxy, nullptr );
   EXPECT_EQ( Topology::getDeviceByLabel( "Named" )->args->driver, "SmbusProxyDriver" );
   EXPECT_TRUE( TestHost::traced( 7, "pl_smbus_add( 'Named', 17 )" ) );
   uint8_t byte;
   FakeServer::answersWith( { "x" } );
   EXPECT_EQ( proxy->ops->read_byte( proxy, 2, &byte ), PL_STATUS_OK );
   EXPECT_TRUE( FakeServer::lastInWords()[0].starts_with( "read 0x09 reg 0x2 " ) );
}

TEST_F( ProxyByLabelTest, TheProxysSecondArgumentIsOnlyTraced ) {
   pl_smbus *first = pl_smbus_add( "Named", 1 ), *second = pl_smbus_add( "Named", 2 );
   ASSERT_NE( first, nullptr );
   ASSERT_NE( second, nullptr );
   EXPECT_EQ( first->ops, second->ops );
   EXPECT_EQ( Component::DeviceBase::devices.size(), 1u );
}

TEST_F( ProxyByLabelTest, ADeviceWithoutDriverGetsANewRecord ) {
   pl_smbus *proxy = pl_smbus_add( "Bare", 0 );
   ASSERT_NE( proxy, nullptr );
   const auto &record = Topology::argumentsOf( "Bare" );
   EXPECT_EQ( record.did, 2u );
   EXPECT_EQ( record.uid, Drivers::noComponent );
   EXPECT_EQ( record.driver, "SmbusProxyDriver" );
   EXPECT_EQ( Topology::getDeviceByLabel( "Bare" )->args, nullptr );
   EXPECT_EQ( Component::DeviceBase::devices.count( 2 ), 1u );
   uint8_t byte;
   FakeServer::answersWith( { "x" } );
   EXPECT_EQ( proxy->ops->read_byte( proxy, 2, &byte ), PL_STATUS_OK );
   EXPECT_TRUE( FakeServer::lastInWords()[0].starts_with( "read 0x50 reg 0x2 " ) );
}

TEST_F( ProxyByLabelTest, AnUnreachableDeviceIsNullAndTraced ) {
   load( "[{'type':'I2C','ham':'Nobody','bus':{'id':0,'devices':["
         "{'did':4,'label':'Far','address':{'address':80}}]}}]" );
   EXPECT_EQ( pl_smbus_add( "Far", 0 ), nullptr );
   EXPECT_EQ( TestHost::tracedAt( 0 ).back(), "DeviceBase::create() failed" );
}

TEST_F( ProxyByLabelTest, AnUnknownLabelStopsTheProcess ) {
   EXPECT_DEATH( pl_smbus_add( "Nobody", 0 ), "Assertion `device' failed" );
}

} // namespace
