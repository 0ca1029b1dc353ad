#include "simulator/chips/EMC2305.h"
#include "BusPins.h"
#include "ManualClock.h"

#include <gtest/gtest.h>

namespace SimulatorTest {

namespace {

using namespace TestSupport;
using namespace Bus;
using namespace Simulator;
using namespace std::chrono_literals;

class EMC2305Test : public ::testing::Test {
 protected:
   ManualClock clock;
   EMC2305 chip{ "fans", clock, { { "a", 25500, 100 }, { "b", 25500, 200 } } };
};

TEST_F( EMC2305Test, IdentifiesItself ) {
   EXPECT_EQ( readFrom( chip, 0xFC, 4 ), ( Bytes{ 0x0D, 0x34, 0x5D, 0x80 } ) );
}

TEST_F( EMC2305Test, PowersUpWithTheDatasheetsValues ) {
   EXPECT_EQ( readFrom( chip, 0x20, 1 ), Bytes{ 0x40 } );
   EXPECT_EQ( readFrom( chip, 0x70, 16 ),
              ( Bytes{ 0x00, 0x01, 0x2B, 0x28, 0x00, 0x2A, 0x19, 0x10, 0x66, 0xF5, 0x00, 0x00, 0xF8,
                       0xFF, 0xFF, 0xF8 } ) );
}

TEST_F( EMC2305Test, CountsTachEdgesByItsRange ) {
   // 10,000 rpm with two poles and five edges.
   EXPECT_EQ( readFrom( chip, 0x3E, 2 ), ( Bytes{ 0x18, 0x90 } ) );
   writeTo( chip, 0x32, { 0x0B } );
   EXPECT_EQ( readFrom( chip, 0x3E, 2 ), ( Bytes{ 0x0C, 0x48 } ) );
   writeTo( chip, 0x32, { 0x6B } );
   EXPECT_EQ( readFrom( chip, 0x3E, 2 ), ( Bytes{ 0x62, 0x50 } ) );
}

TEST_F( EMC2305Test, KeepsItsChannelsApart ) {
   EXPECT_EQ( readFrom( chip, 0x30, 1 ), Bytes{ 100 } );
   EXPECT_EQ( readFrom( chip, 0x40, 1 ), Bytes{ 200 } );
   EXPECT_EQ( readFrom( chip, 0x4E, 2 ), ( Bytes{ 0x0C, 0x48 } ) ); // 20,000 rpm
}

TEST_F( EMC2305Test, LetsARotorFollowItsDriveWithInertia ) {
   writeTo( chip, 0x30, { 200 } );
   EXPECT_EQ( readFrom( chip, 0x3E, 2 ), ( Bytes{ 0x18, 0x90 } ) );
   clock.advance( 800ms ); // one time constant: 16,321 rpm
   EXPECT_EQ( readFrom( chip, 0x3E, 2 ), ( Bytes{ 0x0F, 0x10 } ) );
   clock.advance( 1min );
   EXPECT_EQ( chip.rpm( 0 ), 20000 );
}

TEST_F( EMC2305Test, ReportsAStalledRotorAndCountsToTheMaximum ) {
   EXPECT_EQ( readFrom( chip, 0x25, 1 ), Bytes{ 0x00 } );
   chip.stalledIs( 1, true );
   EXPECT_EQ( chip.rpm( 1 ), 0 );
   EXPECT_EQ( readFrom( chip, 0x4E, 2 ), ( Bytes{ 0xFF, 0xF8 } ) );
   EXPECT_EQ( readFrom( chip, 0x25, 1 ), Bytes{ 0x02 } );
   chip.stalledIs( 1, false );
   clock.advance( 1min );
   EXPECT_EQ( chip.rpm( 1 ), 20000 );
   writeTo( chip, 0x30, { 0 } );
   clock.advance( 1min );
   EXPECT_EQ( readFrom( chip, 0x25, 1 ), Bytes{ 0x00 } ); // it is not driven
}

TEST_F( EMC2305Test, StopsTheRotorOfAPulledModule ) {
   quantity( chip, "a seated" ).set( 0 );
   EXPECT_EQ( quantity( chip, "a rpm" ).get(), 0 );
   EXPECT_EQ( quantity( chip, "b rpm" ).get(), 20000 );
}

TEST_F( EMC2305Test, FindsTheDriveForATargetSpeedInClosedLoop ) {
   writeTo( chip, 0x3C, { 0x48, 0x0C } ); // count 393 by 2: 20,011 rpm
   writeTo( chip, 0x32, { 0xAB } );
   clock.advance( 1min );
   EXPECT_NEAR( chip.rpm( 0 ), 20011, 1 );
   EXPECT_EQ( readFrom( chip, 0x30, 1 ), Bytes{ 200 } );
   writeTo( chip, 0x30, { 10 } ); // read-only now
   EXPECT_EQ( readFrom( chip, 0x30, 1 ), Bytes{ 200 } );
}

TEST_F( EMC2305Test, IgnoresWritesToReadOnlyRegisters ) {
   for ( const uint32_t address : { 0x25u, 0x3Eu, 0x3Fu, 0xFDu, 0xFEu } ) {
      const Bytes before = readFrom( chip, address, 1 );
      EXPECT_EQ( writeTo( chip, address, { 0x55 } ), 2 );
      EXPECT_EQ( readFrom( chip, address, 1 ), before ) << address;
   }
}

TEST_F( EMC2305Test, ReadsZeroWhereItHasNoRegister ) {
   EXPECT_EQ( writeTo( chip, 0x80, { 0x55 } ), 2 );
   EXPECT_EQ( readFrom( chip, 0x80, 1 ), Bytes{ 0x00 } );
   EXPECT_EQ( readFrom( chip, 0x34, 1 ), Bytes{ 0x00 } );
}

TEST_F( EMC2305Test, HoldsItsConfigurationWhileItIsLocked ) {
   writeTo( chip, 0xEF, { 0x01 } );
   writeTo( chip, 0x32, { 0x0B } );
   EXPECT_EQ( readFrom( chip, 0x32, 1 ), Bytes{ 0x2B } );
   writeTo( chip, 0x30, { 0x11 } );
   EXPECT_EQ( readFrom( chip, 0x30, 1 ), Bytes{ 0x11 } );
}

TEST_F( EMC2305Test, ComesBackFromAPowerCycleWithTheBootDrive ) {
   writeTo( chip, 0x30, { 0xFF } );
   writeTo( chip, 0x32, { 0x0B } );
   chip.reset();
   EXPECT_EQ( readFrom( chip, 0x30, 3 ), ( Bytes{ 100, 0x01, 0x2B } ) );
}

} // namespace

} // namespace SimulatorTest
