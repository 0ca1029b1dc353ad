// The transceiver CPLDs: register cache, polling, error LEDs, and their factories.
#include "support/CelesticaFixture.h"

namespace {

using Drivers::CelXcvrCPLD;
using Drivers::KeltQCPLD;
using Drivers::KeltSCPLD;

class KeltQCPLDTest : public KeltQCPLDFixture {};
class KeltSCPLDTest : public KeltSCPLDFixture {};

TEST_F( KeltQCPLDTest, FillsItsCacheSwitchesTheErrorLedsOffAndPollsOnceASecond ) {
   bringUp();
   EXPECT_EQ( TestHost::timers.at( 0 )->milliseconds, 1000u );
   EXPECT_TRUE( TestHost::timers.at( 0 )->armed );
   tick( poll( {}, 0 ) );
   EXPECT_TRUE( TestHost::timers.at( 0 )->armed );
   EXPECT_TRUE( TestHost::traced( 5, "KeltQCPLD init function" ) );
   EXPECT_TRUE( TestHost::traced( 0, "CelXcvrCPLD::init()" ) );
   EXPECT_TRUE( TestHost::traced( 6, "Register cache updated for CelXcvrCPLD" ) );
}

TEST_F( KeltQCPLDTest, ATimerThatCantBeArmedStopsTheProcess ) {
   cpld.ham_ = &ham;
   ham.expectBatch( poll( {}, 0 ) );
   for ( unsigned reg : leds )
      ham.expectBatch( { write8( reg, 0xFF ) } );
   TestHost::armsTimers = false;
   EXPECT_DEATH( cpld.init(), "OrbisGeneric/Drivers/Kelt/CelesticaCPLD.cpp.*Assertion "
                              "`pollStart\\(\\)' failed" );
   TestHost::armsTimers = true;
   cpld.init();
}

TEST_F( KeltQCPLDTest, AFailedWriteKeepsTheCache ) {
   bringUp();
   auto xcvr = port( 9 );
   ham.expectBatch( { write8( 0x253, 0x01 ).fails( 6 ) } );
   EXPECT_EQ( xcvr->setLpMode( 1 ), 6 );
   EXPECT_EQ( xcvr->getLpMode( &value ), PL_STATUS_OK );
   EXPECT_EQ( value, 0 );
}

TEST_F( KeltQCPLDTest, AFailedPollKeepsTheCacheAndIsRepeatedAtTheNextTick ) {
   bringUp( { { 0x255, 0x01 } } );
   auto xcvr = port( 9 );
   auto failing = poll( {}, 0 );
   failing.back() = failing.back().fails( 4 );
   tick( failing );
   EXPECT_TRUE( TestHost::traced( 0, "Failed to poll information for CelXcvrCPLD" ) );
   EXPECT_EQ( xcvr->getPresence(), 1 );
   tick( poll( {}, 0 ) );
   EXPECT_EQ( xcvr->getPresence(), 0 );
   ham.expectBatch( failing );
   EXPECT_FALSE( cpld.updateRegisterCache() );
   ham.expectBatch( poll( {}, 0 ) );
   EXPECT_TRUE( cpld.updateRegisterCache() );
}

TEST_F( KeltQCPLDTest, ARegisterThatWasNeverPolledReadsZero ) {
   cpld.ham_ = &ham;
   auto failing = poll( {}, 0 );
   failing[0] = failing[0].fails( 6 );
   ham.expectBatch( failing );
   for ( unsigned reg : qcpldLeds )
      ham.expectBatch( { write8( reg, 0xFF ) } );
   cpld.init();
   auto xcvr = port( 1 );
   EXPECT_EQ( xcvr->getPresence(), 0 );
   EXPECT_EQ( xcvr->getReset( &value ), PL_STATUS_OK );
   EXPECT_EQ( value, 1 );
   EXPECT_EQ( xcvr->getInterrupt( &value ), PL_STATUS_OK );
   EXPECT_EQ( value, 1 );
   EXPECT_EQ( xcvr->getLpMode( &value ), PL_STATUS_OK );
   EXPECT_EQ( value, 0 );
}

TEST_F( KeltQCPLDTest, WithoutThePollFlagOnlyTheErrorLedsAreWritten ) {
   KeltQCPLD quiet( false );
   quiet.ham_ = &ham;
   for ( unsigned reg : qcpldLeds )
      ham.expectBatch( { write8( reg, 0xFF ) } );
   quiet.init();
   EXPECT_FALSE( TestHost::timers.at( 1 )->armed );
   quiet.pollCallback(); // sends nothing
}

TEST_F( KeltSCPLDTest, AFailedErrorLedWriteIsTracedAndTheOtherLedsAreWritten ) {
   cpld.ham_ = &ham;
   ham.expectBatch( poll( {}, 0 ) );
   ham.expectBatch( { write8( 0x383, 0xFF ) } );
   ham.expectBatch( { write8( 0x384, 0xFF ).fails( 6 ) } );
   ham.expectBatch( { write8( 0x385, 0xFF ) } );
   cpld.init();
   EXPECT_EQ( TestHost::tracedAt( 0 ).back(),
              "Failed to write QSFP Port Error LED Register: 132" ); // 0x84: the low byte
}

TEST_F( KeltQCPLDTest, ARegisterCanBeReadFromTheBusBeforeItsBitIsUsed ) {
   cpld.ham_ = &ham;
   ham.expectBatch( { read8( 0x111 ).answers( { 0x80 } ) } );
   EXPECT_EQ( cpld.getRegisterBit( 0x111, 7, &value, true ), PL_STATUS_OK );
   EXPECT_EQ( value, 1 );
   ham.expectBatch( { read8( 0x111 ).fails( 6 ) } );
   EXPECT_EQ( cpld.getRegisterBit( 0x111, 7, &value, true ), 6 );
   ham.expectBatch( { read8( 0x112 ).answers( { 0x80 } ) } );
   ham.expectBatch( { write8( 0x112, 0x81 ) } );
   EXPECT_EQ( cpld.setRegisterBit( 0x112, 0, 1, true ), PL_STATUS_OK );
   ham.expectBatch( { read8( 0x112 ).fails( 4 ) } );
   EXPECT_EQ( cpld.setRegisterBit( 0x112, 1, 1, true ), 4 );
}

class CpldFactoryTest : public PluginFixture {};

TEST_F( CpldFactoryTest, WithoutThePollFlagNeitherCacheNorTimerIsUsed ) {
   CelXcvrCPLD plain( false );
   plain.CelXcvrCPLD::init(); // without an access method
   EXPECT_TRUE( TestHost::traced( 0, "CelXcvrCPLD::init()" ) );
   EXPECT_FALSE( TestHost::timers.at( 0 )->armed );
}

TEST_F( CpldFactoryTest, TheTypeGpioMakesAPlainDevice ) {
   Drivers::DriverArgs args;
   args.driverArgs = { { "type", "gpio" } };
   for ( auto create : { KeltQCPLD::create, KeltSCPLD::create } ) {
      std::unique_ptr<Component::HardwareDevice> device( create( args, nullptr ) );
      EXPECT_EQ( dynamic_cast<CelXcvrCPLD *>( device.get() ), nullptr );
   }
   EXPECT_TRUE( TestHost::timers.empty() );
   EXPECT_TRUE( TestHost::traced( 5, "Creating KeltQCPLD device" ) );
   EXPECT_TRUE( TestHost::traced( 5, "Creating KeltSCPLD device" ) );
}

TEST_F( CpldFactoryTest, AnyOtherTypeMakesACpld ) {
   Drivers::DriverArgs args;
   args.driverArgs = { { "type", "psu" } };
   for ( auto create : { KeltQCPLD::create, KeltSCPLD::create } ) {
      std::unique_ptr<Component::HardwareDevice> device( create( args, nullptr ) );
      EXPECT_NE( dynamic_cast<CelXcvrCPLD *>( device.get() ), nullptr );
   }
}

TEST_F( CpldFactoryTest, ThePollFlagCountsWithAnyValue ) {
   ScriptedHam ham;
   Drivers::DriverArgs args;
   args.driverArgs = { { "xcvrPoll", "false" } };
   std::unique_ptr<Component::HardwareDevice> device( KeltSCPLD::create( args, nullptr ) );
   device->ham_ = &ham;
   std::vector<Transfer> batch;
   for ( const auto *table : { &scpldQsfp, &scpldSfp } )
      for ( const auto &group : *table )
         for ( unsigned reg : group.registers )
            batch.push_back( read8( reg ).answers( { 0 } ) );
   ham.expectBatch( batch );
   for ( unsigned reg : scpldLeds )
      ham.expectBatch( { write8( reg, 0xFF ) } );
   device->init();
   EXPECT_TRUE( TestHost::traced( 5, "KeltSCPLD init function" ) );
}

} // namespace
