#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/Drivers/Kelt/CelesticaCPLD.h"
#include "support/PluginFixture.h"
#include "support/ScriptedHam.h"

namespace {

using Drivers::KeltSCPLD;

class CelesticaLedTest : public PluginFixture {
 protected:
   using Led = Component::LogicalDevice::Led;

   CelesticaLedTest() {
      cpld.ham_ = &ham;
      Led::createBlinkTimer();
   }
   std::unique_ptr<Led> led( const char *type, const char *id ) {
      Drivers::DriverArgs args;
      args.driverArgs = { { "type", type }, { "id", id } };
      return std::unique_ptr<Led>( cpld.newLed( args ) );
   }
   void expectChange( uint8_t before, uint8_t after ) {
      ham.expectBatch( { read8( 0x303 ).answers( { before } ) } );
      ham.expectBatch( { write8( 0x303, after ) } );
   }
   ScriptedHam ham;
   KeltSCPLD cpld{ false };
};

TEST_F( CelesticaLedTest, BothSystemLedIdsUseTheSameTwoBits ) {
   for ( const char *id : { "1", "2" } ) {
      auto system = led( "status", id );
      EXPECT_FALSE( system->usesBlinkTimer ); // the CPLD blinks it
      expectChange( 0xA4, 0xA7 );
      EXPECT_EQ( system->setLightSetting( PL_LED_OFF ), PL_STATUS_OK );
      expectChange( 0xA4, 0xA7 );
      EXPECT_EQ( system->setLightSetting( PL_LED_BAD ), PL_STATUS_OK );
      expectChange( 0xA4, 0xA7 );
      EXPECT_EQ( system->setLightSetting( PL_LED_UNKNOWN ), PL_STATUS_OK );
      expectChange( 0xA7, 0xA4 );
      EXPECT_EQ( system->setLightSetting( PL_LED_GOOD ), PL_STATUS_OK );
      expectChange( 0xA5, 0xA6 );
      EXPECT_EQ( system->setLightSetting( PL_LED_BEACON ), PL_STATUS_OK );
   }
   EXPECT_TRUE( TestHost::traced( 6, "setting CPLD System Led 1 to Beacon" ) );
   EXPECT_FALSE( TestHost::traced( 6, "Setting status for KeltCPLD System LED-0 failed." ) );
   EXPECT_TRUE( TestHost::traced( 5, "creating new KeltCPLD status LED with id 2" ) );
}

TEST_F( CelesticaLedTest, TheSystemLedCantShowWarningOrInactive ) {
   auto system = led( "status", "1" );
   for ( auto status : { PL_LED_WARNING, PL_LED_INACTIVE } ) {
      ham.expectBatch( { read8( 0x303 ).answers( { 0 } ) } );
      EXPECT_EQ( system->setLightSetting( status ), 3 );
   }
   EXPECT_TRUE( TestHost::traced( 0, "led 0 was given an unexpected setting 2" ) );
}

TEST_F( CelesticaLedTest, AZeroInItsBitLightsAPsuLed ) {
   auto second = led( "psu", "2" );
   EXPECT_TRUE( second->usesBlinkTimer );
   expectChange( 0xFF, 0xF7 );
   EXPECT_EQ( second->setLightSetting( PL_LED_GOOD ), PL_STATUS_OK );
   expectChange( 0x51, 0x59 );
   EXPECT_EQ( second->setLightSetting( PL_LED_OFF ), PL_STATUS_OK );
   expectChange( 0x51, 0x59 );
   EXPECT_EQ( second->setLightSetting( PL_LED_BAD ), PL_STATUS_OK );
   auto first = led( "psu", "1" );
   expectChange( 0xFF, 0xFB );
   EXPECT_EQ( first->setLightSetting( PL_LED_GOOD ), PL_STATUS_OK );
   EXPECT_TRUE( TestHost::traced( 6, "setting CPLD PSU Led 1 to Good" ) );
   EXPECT_TRUE( TestHost::traced( 5, "creating new KeltCPLD psu LED with id 2" ) );
   EXPECT_FALSE( TestHost::traced( 6, "Setting status for KeltCPLD PSU LED-1 failed." ) );
   EXPECT_FALSE( TestHost::traced( 0, "Error reading CPLD led register" ) );
   EXPECT_TRUE( Led::notifyList_.empty() );
}

TEST_F( CelesticaLedTest, APsuLedCantShowTheOtherSettings ) {
   auto psu = led( "psu", "1" );
   for ( auto status : { PL_LED_WARNING, PL_LED_INACTIVE, PL_LED_UNKNOWN } ) {
      ham.expectBatch( { read8( 0x303 ).answers( { 0 } ) } );
      EXPECT_EQ( psu->setLightSetting( status ), 3 );
   }
   EXPECT_TRUE( TestHost::traced( 0, "led 0 was given an unexpected setting 5" ) );
}

TEST_F( CelesticaLedTest, ABeaconIsOnTheBlinkListOnceAndStartsDark ) {
   auto psu = led( "psu", "2" );
   expectChange( 0x00, 0x08 );
   EXPECT_EQ( psu->setLightSetting( PL_LED_BEACON ), PL_STATUS_OK );
   ham.expectBatch( { read8( 0x303 ).answers( { 0x08 } ) } );
   EXPECT_EQ( psu->setLightSetting( PL_LED_BEACON ), PL_STATUS_OK );
   EXPECT_EQ( Led::notifyList_.size(), 1u );
}

TEST_F( CelesticaLedTest, ABeaconBlinksEvenAfterAFailedWrite ) {
   auto psu = led( "psu", "2" );
   TestHost::traces.clear();
   ham.expectBatch( { read8( 0x303 ).answers( { 0x00 } ) } );
   ham.expectBatch( { write8( 0x303, 0x08 ).fails( 6 ) } );
   EXPECT_EQ( psu->setLightSetting( PL_LED_BEACON ), 6 );
   EXPECT_EQ( Led::notifyList_.size(), 1u );
   EXPECT_EQ( TestHost::tracedAt( 6 ),
              ( std::vector<std::string>{ "setting CPLD PSU Led 1 to Beacon" } ) );
}

TEST_F( CelesticaLedTest, ABlinkingLedLeavesTheListEvenWhenTheBusFails ) {
   for ( auto setting : { PL_LED_GOOD, PL_LED_WARNING } ) {
      auto psu = led( "psu", "2" );
      expectChange( 0x00, 0x08 );
      psu->setLightSetting( PL_LED_BEACON );
      ham.expectBatch( { read8( 0x303 ).fails( 6 ) } );
      EXPECT_EQ( psu->setLightSetting( setting ), 6 );
      EXPECT_TRUE( Led::notifyList_.empty() );
   }
}

TEST_F( CelesticaLedTest, AThirdPsuLedStopsTheProcess ) {
   Drivers::CelXcvrCPLD::PsuLed third( &cpld, 2 );
   EXPECT_DEATH( third.setLightSetting( PL_LED_GOOD ),
                 "OrbisGeneric/Drivers/Kelt/CelesticaCPLD\\.cpp.*"
                 "Assertion `0 <= id_ && id_ <= 1' failed" );
}

TEST_F( CelesticaLedTest, ABlinkingLedShowsBothPhasesUntilAnotherSetting ) {
   auto psu = led( "psu", "2" );
   expectChange( 0x00, 0x08 );
   psu->setLightSetting( PL_LED_BEACON );
   expectChange( 0x01, 0x09 );
   TestHost::timers.back()->expire(); // off
   expectChange( 0x09, 0x01 );
   TestHost::timers.back()->expire(); // on
   expectChange( 0x01, 0x01 );
   EXPECT_EQ( psu->setLightSetting( PL_LED_GOOD ), PL_STATUS_OK );
   EXPECT_TRUE( Led::notifyList_.empty() );
   expectChange( 0x00, 0x08 );
   psu->setLightSetting( PL_LED_BEACON ); // is added to the blink list again
   EXPECT_EQ( Led::notifyList_.size(), 1u );
}

TEST_F( CelesticaLedTest, AFailedBlinkRemovesTheLedFromTheList ) {
   auto psu = led( "psu", "1" );
   expectChange( 0x00, 0x04 );
   psu->setLightSetting( PL_LED_BEACON );
   ham.expectBatch( { read8( 0x303 ).answers( { 0x04 } ) } );
   ham.expectBatch( { write8( 0x303, 0x04 ).fails( 6 ) } );
   TestHost::timers.back()->expire();
   EXPECT_TRUE( Led::notifyList_.empty() );
   Led::notifyOnBlink( psu.get() );
   ham.expectBatch( { read8( 0x303 ).fails( 6 ) } );
   TestHost::timers.back()->expire();
   EXPECT_TRUE( Led::notifyList_.empty() );
   EXPECT_TRUE( TestHost::traced( 0, "Error reading CPLD led register" ) );
}

TEST_F( CelesticaLedTest, BusFailuresAreTracedAndReturned ) {
   auto system = led( "status", "1" ), psu = led( "psu", "2" );
   for ( auto *each : { system.get(), psu.get() } ) {
      TestHost::traces.clear();
      ham.expectBatch( { read8( 0x303 ).fails( 4 ) } );
      EXPECT_EQ( each->setLightSetting( PL_LED_GOOD ), 4 );
      EXPECT_TRUE( TestHost::traced( 0, "Error reading CPLD led register" ) );
      ham.expectBatch( { read8( 0x303 ).answers( { 0 } ) } );
      ham.expectBatch( { write8( 0x303, 0x00 ).fails( 6 ) } );
      EXPECT_EQ( each->setLightSetting( PL_LED_GOOD ), 6 );
      EXPECT_TRUE( TestHost::traced( 6, each == system.get()
                                           ? "Setting status for KeltCPLD System LED-0 failed."
                                           : "Setting status for KeltCPLD PSU LED-1 failed." ) );
   }
}

TEST_F( CelesticaLedTest, AnotherTypeMakesNoLed ) {
   EXPECT_EQ( led( "fan", "1" ), nullptr );
   EXPECT_TRUE( TestHost::traced( 0, "Error: failed to find driverArg for KeltCPLD::newLed" ) );
}

TEST_F( CelesticaLedTest, MissingArgumentsAndIdsOutOfRangeStopTheProcess ) {
   Drivers::DriverArgs args;
   args.driverArgs = { { "type", "psu" } };
   EXPECT_DEATH(
      cpld.newLed( args ),
      ::testing::AllOf(
         ::testing::HasSubstr( "OrbisGeneric/Drivers/Kelt/CelesticaCPLD.cpp" ),
         ::testing::HasSubstr( R"(args.driverArgs.find( "id" ) != args.driverArgs.end())" ) ) );
   args.driverArgs = { { "id", "1" } };
   EXPECT_DEATH( cpld.newLed( args ), "it != args.driverArgs.end" );
   EXPECT_DEATH( led( "psu", "0" ), "Assertion `ledId >= 1 && ledId <= 2' failed" );
   EXPECT_DEATH( led( "psu", "3" ), "Assertion `ledId >= 1 && ledId <= 2' failed" );
}

} // namespace
