#include "simulator/chips/PCA9548.h"

#include <gtest/gtest.h>

namespace SimulatorTest {

namespace {

using namespace Simulator;

int joined( const PCA9548 &mux ) {
   int channels = 0;
   for ( unsigned channel = 0; channel < 8; ++channel )
      channels |= mux.selects( channel ) << channel;
   return channels;
}

void send( PCA9548 &mux, uint8_t byte ) {
   EXPECT_TRUE( mux.addressed( Direction::Write ) );
   EXPECT_TRUE( mux.command( byte ) );
   mux.stopped();
}

TEST( PCA9548Test, SelectsNoChannelAfterPowerOn ) {
   const PCA9548 mux( "mux" );
   EXPECT_EQ( joined( mux ), 0x00 );
}

TEST( PCA9548Test, SelectsEachChannelByItsBit ) {
   PCA9548 mux( "mux" );
   for ( unsigned channel = 0; channel < 8; ++channel ) {
      send( mux, static_cast<uint8_t>( 1 << channel ) );
      EXPECT_EQ( joined( mux ), 1 << channel );
   }
}

TEST( PCA9548Test, SelectsAnyCombinationOfChannels ) {
   PCA9548 mux( "mux" );
   for ( const int channels : { 0x00, 0x81, 0xA5, 0xFF } ) {
      send( mux, static_cast<uint8_t>( channels ) );
      EXPECT_EQ( joined( mux ), channels );
      EXPECT_EQ( mux.read(), channels );
   }
}

TEST( PCA9548Test, ChangesItsChannelsOnlyAtTheStop ) {
   PCA9548 mux( "mux" );
   mux.addressed( Direction::Write );
   mux.command( 0x04 );
   EXPECT_EQ( joined( mux ), 0x00 );
   mux.addressed( Direction::Read );
   EXPECT_EQ( mux.read(), 0x04 );
   EXPECT_EQ( joined( mux ), 0x00 );
   mux.stopped();
   EXPECT_EQ( joined( mux ), 0x04 );
}

TEST( PCA9548Test, KeepsTheLastOfSeveralBytes ) {
   PCA9548 mux( "mux" );
   mux.addressed( Direction::Write );
   mux.command( 0x04 );
   mux.write( 0x02 );
   mux.write( 0x08 );
   mux.stopped();
   EXPECT_EQ( joined( mux ), 0x08 );
}

TEST( PCA9548Test, ReadsWithoutChangingAnything ) {
   PCA9548 mux( "mux" );
   send( mux, 0x10 );
   mux.addressed( Direction::Read );
   EXPECT_EQ( mux.read(), 0x10 );
   EXPECT_EQ( mux.read(), 0x10 );
   mux.stopped();
   EXPECT_EQ( joined( mux ), 0x10 );
}

TEST( PCA9548Test, SelectsNoChannelAfterItIsPulledAndInserted ) {
   PCA9548 mux( "mux" );
   send( mux, 0x10 );
   mux.presentIs( false );
   mux.presentIs( true );
   EXPECT_EQ( joined( mux ), 0x00 );
}

} // namespace

} // namespace SimulatorTest
