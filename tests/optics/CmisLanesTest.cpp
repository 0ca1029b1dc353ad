#include "Images.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace OpticsTest {

namespace {

using namespace Optics;
using enum Quantity;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

TEST( CmisLanesTest, ReadsTheFlagsOfEachLane ) {
   for ( const auto &[first, quantity] :
         { std::pair( 139u, TxPower ), std::pair( 143u, TxBias ), std::pair( 149u, RxPower ) } )
      for ( unsigned i = 0; i < 4; ++i )
         for ( unsigned lane = 1; lane <= 4; ++lane ) {
            Bytes file = qsfpDd();
            file[page11OfCmis + first + i] = static_cast<uint8_t>( 1 << ( lane - 1 ) );
            const Module module = decoded( file );
            for ( const Monitor &monitor : module.monitors ) {
               const bool isIt = monitor.quantity == quantity && monitor.lane == lane;
               EXPECT_EQ( monitor.flags, ( ThresholdFlags{ isIt && i == 0, isIt && i == 1,
                                                           isIt && i == 2, isIt && i == 3 } ) );
            }
         }
}

TEST( CmisLanesTest, ReadsTheStateOfAnOddLaneFromTheLowerHalfOfAByte ) {
   Bytes file = qsfpDd();
   put( file, page11OfCmis + 128, { 0x21, 0x43, 0x65, 0x07 } );
   put( file, page11OfCmis + 202, { 0x21, 0x43, 0x65, 0xC7 } );
   put( file, page11OfCmis + 206, { 0x10, 0x20, 0x30, 0x40, 0x50, 0x60, 0x70, 0xF0 } );
   const std::vector<Lane> lanes = decoded( file ).lanes;
   ASSERT_EQ( lanes.size(), 8u );
   for ( unsigned i = 0; i < 7; ++i ) {
      EXPECT_EQ( lanes[i].dataPathState->number, i + 1 );
      EXPECT_EQ( lanes[i].configuration->number, i + 1 );
      EXPECT_EQ( lanes[i].application, i + 1 );
   }
   EXPECT_EQ( lanes[0].dataPathState->name, "deactivated" );
   EXPECT_EQ( lanes[3].dataPathState->name, "activated" );
   EXPECT_EQ( lanes[7].dataPathState->name, "reserved (00h)" );
   EXPECT_EQ( lanes[7].configuration->name, "in progress" );
   EXPECT_EQ( lanes[7].application, 15u );
}

TEST( CmisLanesTest, ReadsTheStatesOfItsLanes ) {
   Bytes file = qsfpDd();
   put( file, page11OfCmis + 132, { 0x01, 0x02, 0x00, 0x04, 0x08, 0x01, 0x02 } );
   put( file, page11OfCmis + 147, { 0x04, 0x08 } );
   file[page10OfCmis + 130] = 0x01;
   file[page10OfCmis + 138] = 0x02;
   for ( const Lane &lane : decoded( file ).lanes ) {
      if ( lane.number > 4 )
         continue;
      EXPECT_EQ( lane.rxOutputValid, lane.number == 1 );
      EXPECT_EQ( lane.txOutputValid, lane.number == 2 );
      EXPECT_EQ( lane.txFault, lane.number == 3 );
      EXPECT_EQ( lane.txLos, lane.number == 4 );
      EXPECT_EQ( lane.txLossOfLock, lane.number == 1 );
      EXPECT_EQ( lane.txEqualizerFault, lane.number == 2 );
      EXPECT_EQ( lane.rxLos, lane.number == 3 );
      EXPECT_EQ( lane.rxLossOfLock, lane.number == 4 );
      EXPECT_EQ( lane.txDisabled, lane.number == 1 );
      EXPECT_EQ( lane.rxDisabled, lane.number == 2 );
   }
}

TEST( CmisLanesTest, LeavesOutStatesThatItDoesNotClaim ) {
   Bytes file = qsfpDd();
   put( file, page01OfCmis + 155, { 0, 0, 0, 0 } );
   put( file, page11OfCmis + 134, Bytes( 20, 0xFF ) );
   const Lane lane = decoded( file ).lanes.at( 0 );
   for ( const auto &state : { lane.txFault, lane.txLos, lane.txLossOfLock, lane.txEqualizerFault,
                               lane.rxLos, lane.rxLossOfLock, lane.txDisabled, lane.rxDisabled } )
      EXPECT_EQ( state, std::nullopt );
   EXPECT_EQ( lane.rxOutputValid, true );
}

TEST( CmisLanesTest, LeavesOutLanesOfFibreThatAreNotThere ) {
   const Module module = decoded( qsfpDd() );
   EXPECT_NE( monitorOf( module, RxPower, 4 ), nullptr );
   EXPECT_EQ( monitorOf( module, RxPower, 5 ), nullptr );
   // The host has eight lanes all the same.
   ASSERT_EQ( module.lanes.size(), 8u );
   EXPECT_EQ( module.lanes[4].rxLos, std::nullopt );
   EXPECT_EQ( module.lanes[4].txFault, std::nullopt );
   EXPECT_EQ( module.lanes[4].txDisabled, std::nullopt );
   EXPECT_EQ( module.lanes[4].txOutputValid, std::nullopt );
   EXPECT_NE( module.lanes[4].txLos, std::nullopt );
   EXPECT_NE( module.lanes[4].dataPathState, std::nullopt );
}

TEST( CmisLanesTest, LeavesOutLanesThatNeitherSideHas ) {
   Bytes file = qsfpDd();
   put( file, 86, { 0x0F, 0x17, 0x44, 0x01, 0xFF } );
   EXPECT_EQ( decoded( file ).lanes.size(), 4u );
}

TEST( CmisLanesTest, SaysThatLanesAbove8AreNotShown ) {
   Bytes file = qsfpDd();
   file[page01OfCmis + 142] = 0x01;
   EXPECT_THAT( decoded( file ).findings, ElementsAre( HasSubstr( "more than 8 lanes" ) ) );
}

} // namespace

} // namespace OpticsTest
