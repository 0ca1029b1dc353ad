#include "OrbisGeneric/Drivers/GenericSmbusMux.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "support/ScriptedHam.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

class GenericSmbusMuxTest : public ::testing::Test {
 protected:
   GenericSmbusMuxTest() { driver.ham_ = &own; }

   ScriptedHam own, other;
   Drivers::GenericSmbusMux driver;
   Drivers::DriverArgs args;
};

TEST_F( GenericSmbusMuxTest, SendsTheLowByteOfItsValueUnchanged ) {
   std::unique_ptr<Component::LogicalDevice::Mux> mux( driver.newMux( args, 0x104 ) );
   EXPECT_EQ( mux->device(), &driver );
   other.expectBatch( { sendByte( 0x04 ), sendByte( 0x00 ) } );
   other.prepare();
   EXPECT_TRUE( mux->selectRequest( &other ) );
   EXPECT_TRUE( mux->resetRequest( &other ) ); // all channels off
   EXPECT_EQ( other.execute(), PL_STATUS_OK );
}

TEST_F( GenericSmbusMuxTest, SelectsAtOnceThroughItsOwnAccessMethod ) {
   Drivers::GenericSmbusMux::Mux mux( &driver, 0x80 );
   for ( int i = 0; i < 2; ++i ) {
      own.expectBatch( { sendByte( 0x80 ) } );
      EXPECT_EQ( mux.executeMuxRequest(), PL_STATUS_OK );
   }
}

TEST_F( GenericSmbusMuxTest, ReturnsTheStatusOfAnUnacknowledgedSelectByte ) {
   Drivers::GenericSmbusMux::Mux mux( &driver, 1 );
   own.expectBatch( { sendByte( 1 ).fails( 6 ) } );
   EXPECT_EQ( mux.executeMuxRequest(), 6 );
}

} // namespace
