#include "simulator/chips/PCA9506.h"
#include "BusPins.h"

#include <gtest/gtest.h>

namespace SimulatorTest {

namespace {

using namespace Simulator;

class PCA9506Test : public ::testing::Test {
 protected:
   PCA9506 chip{ "pins" };
};

TEST_F( PCA9506Test, PowersUpWithAllPinsInputs ) {
   EXPECT_EQ( readFrom( chip, 0x88, 5 ), ( Bytes{ 0, 0, 0, 0, 0 } ) );
   EXPECT_EQ( readFrom( chip, 0x98, 5 ), ( Bytes{ 0xFF, 0xFF, 0xFF, 0xFF, 0xFF } ) );
   EXPECT_EQ( readFrom( chip, 0xA0, 5 ), ( Bytes{ 0xFF, 0xFF, 0xFF, 0xFF, 0xFF } ) );
}

TEST_F( PCA9506Test, StartsAtItsInputsWithAutoIncrement ) {
   chip.drivenIs( 9, false );
   chip.addressed( Direction::Read );
   EXPECT_EQ( chip.read(), 0xFF );
   EXPECT_EQ( chip.read(), 0xFD );
}

TEST_F( PCA9506Test, ShowsExternalLevelsAndPulls ) {
   chip.pullIs( 23, false );
   chip.drivenIs( 0, false );
   chip.drivenIs( 39, false );
   EXPECT_EQ( readFrom( chip, 0x80, 5 ), ( Bytes{ 0xFE, 0xFF, 0x7F, 0xFF, 0x7F } ) );
   chip.drivenIs( 0, std::nullopt );
   EXPECT_EQ( readFrom( chip, 0x00, 1 ), Bytes{ 0xFF } );
}

TEST_F( PCA9506Test, ShowsItsOwnOutputsAtTheInputs ) {
   writeTo( chip, 0x18, { 0x0F } );
   writeTo( chip, 0x08, { 0xA5 } );
   EXPECT_EQ( readFrom( chip, 0x00, 1 ), Bytes{ 0xAF } );
   EXPECT_EQ( readFrom( chip, 0x08, 1 ), Bytes{ 0xA5 } );
}

TEST_F( PCA9506Test, InvertsInputsByThePolarityRegister ) {
   writeTo( chip, 0x11, { 0x0F } );
   EXPECT_EQ( readFrom( chip, 0x01, 1 ), Bytes{ 0xF0 } );
}

TEST_F( PCA9506Test, StepsThroughItsBanksOnlyWithAutoIncrement ) {
   writeTo( chip, 0x8B, { 0x33, 0x44, 0x00 } );
   EXPECT_EQ( readFrom( chip, 0x88, 6 ), ( Bytes{ 0x00, 0, 0, 0x33, 0x44, 0x00 } ) );
   writeTo( chip, 0x09, { 0x11, 0x22 } );
   EXPECT_EQ( readFrom( chip, 0x09, 3 ), ( Bytes{ 0x22, 0x22, 0x22 } ) );
   EXPECT_EQ( readFrom( chip, 0x0A, 1 ), Bytes{ 0x00 } );
}

TEST_F( PCA9506Test, RefusesCommandsWithoutARegister ) {
   for ( const uint32_t command : { 0x05u, 0x07u, 0x0Du, 0x25u, 0x28u, 0x40u, 0x85u, 0xA8u } )
      EXPECT_EQ( writeTo( chip, command, {} ), 0 ) << command;
   for ( const uint32_t command : { 0x00u, 0x04u, 0x24u, 0x80u, 0xA4u } )
      EXPECT_EQ( writeTo( chip, command, {} ), 1 ) << command;
}

TEST_F( PCA9506Test, IgnoresWritesToInputs ) {
   EXPECT_EQ( writeTo( chip, 0x00, { 0x00 } ), 2 );
   EXPECT_EQ( readFrom( chip, 0x00, 1 ), Bytes{ 0xFF } );
}

TEST_F( PCA9506Test, CallsTheActionWhenAllWatchedPinsAreDrivenHigh ) {
   int times = 0;
   chip.onHigh( { 23, 26 }, [&] { ++times; } );
   writeTo( chip, 0x98, { 0xFF, 0xFF, 0x7F, 0xFB } );
   writeTo( chip, 0x0A, { 0x80 } );
   EXPECT_EQ( times, 0 );
   writeTo( chip, 0x0B, { 0x04 } );
   EXPECT_EQ( times, 1 );
   readFrom( chip, 0x0B, 1 );
   EXPECT_EQ( times, 1 );
}

TEST_F( PCA9506Test, HasAQuantityForEachPin ) {
   quantity( chip, "pin10" ).set( 0 );
   EXPECT_EQ( readFrom( chip, 0x01, 1 ), Bytes{ 0xFB } );
   EXPECT_EQ( quantity( chip, "pin11" ).get(), 1 );
}

} // namespace

} // namespace SimulatorTest
