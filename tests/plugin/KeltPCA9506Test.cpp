#include "OrbisGeneric/Drivers/Kelt/KeltPCA9506.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "support/Layout.h"
#include "support/PluginFixture.h"
#include "support/ScriptedHam.h"

REVEAL( IndexOfFansBay, Component::LogicalDevice::Slot::index_ );

namespace {

using Drivers::KeltPCA9506;

class KeltPCA9506Test : public PluginFixture {
 protected:
   using Led = Component::LogicalDevice::Led;
   using Slot = Component::LogicalDevice::Slot;
   using Arguments = std::map<std::string, std::string>;

   KeltPCA9506Test() {
      expander.ham_ = &ham;
      ham.expectBatch( { write8( 0x18, 0xFF ), write8( 0x19, 0xFF ), write8( 0x1A, 0x7F ),
                         write8( 0x1B, 0x1B ), write8( 0x1C, 0x80 ) } );
      expander.init();
      Led::createBlinkTimer();
      slotArguments = { { "fanId", "2" },
                        { "presenceBitOffset", "1" },
                        { "fanFdl", "{modelName} {airflowDirection} {maxRpm}" },
                        { "rpmF2B", "23000" },
                        { "rpmB2F", "21000" },
                        { "modelName", "FAN-7" } };
   }
   ~KeltPCA9506Test() override { free( fdl ); }

   std::unique_ptr<Led> led( const char *id ) {
      Drivers::DriverArgs args;
      args.driverArgs = { { "id", id } };
      return std::unique_ptr<Led>( expander.newLed( args ) );
   }
   std::unique_ptr<Slot> slot() {
      Drivers::DriverArgs args;
      args.driverArgs = slotArguments;
      return std::unique_ptr<Slot>( expander.newSlot( args ) );
   }
   std::string present( Slot &s ) {
      TestHost::now += 3; // longer than the input cache is valid
      free( fdl );
      fdl = nullptr;
      status = s.getPresence( &fdl );
      return fdl ? fdl : "";
   }
   // Fan 2: presence is pin 11 (bank 1 bit 3), airflow pin 16 (bank 2 bit 0).
   void expectModule( bool frontToBack ) {
      ham.expectBatch( { read8( 0x01 ).answers( { 0xF7 } ) } );
      ham.expectBatch(
         { read8( 0x02 ).answers( { static_cast<uint8_t>( frontToBack ? 0x01 : 0xFE ) } ) } );
   }
   ScriptedHam ham;
   KeltPCA9506 expander;
   Arguments slotArguments;
   char *fdl = nullptr;
   pl_status status = PL_STATUS_OK;
};

TEST_F( KeltPCA9506Test, ItsCreationIsTraced ) {
   delete KeltPCA9506::create( {}, &ham );
   EXPECT_TRUE( TestHost::traced( 0, "Creating Kelt PCA9506 Device" ) );
   EXPECT_FALSE( TestHost::traced( 0, "Error: failed to write PCA9506 pin configuration" ) );
}

TEST_F( KeltPCA9506Test, AConfigurationThatCantBeWrittenIsTraced ) {
   KeltPCA9506 other;
   other.ham_ = &ham;
   ham.expectBatch( { write8( 0x18, 0xFF ), write8( 0x19, 0xFF ), write8( 0x1A, 0x7F ),
                      write8( 0x1B, 0x1B ).fails( 6 ), write8( 0x1C, 0x80 ) } );
   other.init();
   EXPECT_TRUE( TestHost::traced( 0, "Error: failed to write PCA9506 pin configuration" ) );
}

TEST_F( KeltPCA9506Test, PowersOffByTwoPinsInOneTransaction ) {
   ham.expectBatch( { read8( 0x0A ).answers( { 0x01 } ) } );
   ham.expectBatch( { read8( 0x0B ).answers( { 0x40 } ) } );
   ham.expectBatch( { write8( 0x0A, 0x81 ), write8( 0x0B, 0x44 ) } );
   EXPECT_EQ( expander.poweroff(), PL_STATUS_OK );
}

TEST_F( KeltPCA9506Test, AFailedPowerOffReturnsItsStatus ) {
   ham.expectBatch( { read8( 0x0A ).fails( 6 ) } );
   EXPECT_EQ( expander.poweroff(), 6 );
   ham.expectBatch( { read8( 0x0A ).answers( { 0 } ) } );
   ham.expectBatch( { read8( 0x0B ).fails( 4 ) } );
   EXPECT_EQ( expander.poweroff(), 4 );
   ham.expectBatch( { read8( 0x0B ).answers( { 0 } ) } );
   ham.expectBatch( { write8( 0x0A, 0x80 ), write8( 0x0B, 0x04 ).fails( 6 ) } );
   EXPECT_EQ( expander.poweroff(), 6 );
}

TEST_F( KeltPCA9506Test, EachFanLedHasTwoActiveLowPins ) {
   // The register of the bank and the bits of the two pins. The pins of fan 1 are in two banks: see
   // the next test.
   struct {
      const char *id;
      unsigned reg;
      uint8_t pinA, pinB;
   } const rows[] = { { "2", 0x0B, 1 << 5, 1 << 6 },
                      { "3", 0x0C, 1 << 3, 1 << 4 },
                      { "4", 0x0C, 1 << 5, 1 << 6 },
                      { "5", 0x0C, 1 << 1, 1 << 2 } };
   for ( const auto &row : rows ) {
      auto fan = led( row.id );
      const auto dark = static_cast<uint8_t>( 0x80 | row.pinA | row.pinB );
      const std::pair<pl_led_status, int> settings[] = { { PL_LED_OFF, dark },
                                                         { PL_LED_GOOD, 0x80 | row.pinA },
                                                         { PL_LED_BAD, 0x80 | row.pinB },
                                                         { PL_LED_WARNING, 0x80 } };
      for ( const auto &[setting, byte] : settings ) {
         ham.expectBatch( { read8( row.reg ).answers( { dark } ) } );
         ham.expectBatch( { write8( row.reg, static_cast<uint8_t>( byte ) ) } );
         EXPECT_EQ( fan->setLightSetting( setting ), PL_STATUS_OK );
      }
   }
   EXPECT_TRUE( TestHost::traced( 6, "Setting PCA9506 led 4 to Warning" ) );
   EXPECT_TRUE( TestHost::traced( 5, "creating new PCA9506 LED for fan id 5" ) );
}

TEST_F( KeltPCA9506Test, TheFirstFanLedUsesTwoBanks ) {
   auto fan = led( "1" );
   ham.expectBatch( { read8( 0x0B ).answers( { 0x00 } ) } );
   ham.expectBatch( { read8( 0x0C ).answers( { 0x03 } ) } );
   ham.expectBatch( { write8( 0x0B, 0x80 ), write8( 0x0C, 0x02 ) } );
   EXPECT_EQ( fan->setLightSetting( PL_LED_GOOD ), PL_STATUS_OK );
}

TEST_F( KeltPCA9506Test, AnLedCantShowInactiveOrUnknown ) {
   auto fan = led( "2" );
   EXPECT_EQ( fan->setLightSetting( PL_LED_INACTIVE ), 3 );
   EXPECT_EQ( fan->setLightSetting( PL_LED_UNKNOWN ), 3 );
   EXPECT_TRUE( TestHost::traced( 6, "led 1 was given an unexpected setting 5" ) );
}

TEST_F( KeltPCA9506Test, ReturnsTheStatusOfAFailedSave ) {
   auto fan = led( "2" );
   ham.expectBatch( { read8( 0x0B ).answers( { 0 } ) } );
   ham.expectBatch( { write8( 0x0B, 0x60 ).fails( 6 ) } );
   EXPECT_EQ( fan->setLightSetting( PL_LED_OFF ), 6 );
}

TEST_F( KeltPCA9506Test, ABeaconThatIsSetTwiceBlinksRedOnce ) {
   auto fan = led( "2" );
   EXPECT_TRUE( fan->usesBlinkTimer );
   ham.expectBatch( { read8( 0x0B ).answers( { 0x00 } ) } );
   ham.expectBatch( { write8( 0x0B, 0x60 ) } );
   EXPECT_EQ( fan->setLightSetting( PL_LED_BEACON ), PL_STATUS_OK );
   EXPECT_EQ( fan->setLightSetting( PL_LED_BEACON ), PL_STATUS_OK ); // changes nothing
   EXPECT_EQ( Led::notifyList_.size(), 1u );
   ham.expectBatch( { read8( 0x0B ).answers( { 0x60 } ) } );
   ham.expectBatch( { write8( 0x0B, 0x60 ) } );
   TestHost::timers.back()->expire(); // off
   ham.expectBatch( { read8( 0x0B ).answers( { 0x60 } ) } );
   ham.expectBatch( { write8( 0x0B, 0x40 ) } );
   TestHost::timers.back()->expire(); // red
   ham.expectBatch( { read8( 0x0B ).answers( { 0x40 } ) } );
   ham.expectBatch( { write8( 0x0B, 0x20 ) } );
   EXPECT_EQ( fan->setLightSetting( PL_LED_GOOD ), PL_STATUS_OK );
   EXPECT_TRUE( Led::notifyList_.empty() );
   ham.expectBatch( { read8( 0x0B ).answers( { 0x20 } ) } );
   ham.expectBatch( { write8( 0x0B, 0x60 ) } );
   EXPECT_EQ( fan->setLightSetting( PL_LED_BEACON ), PL_STATUS_OK ); // blinks again
   EXPECT_EQ( Led::notifyList_.size(), 1u );
}

TEST_F( KeltPCA9506Test, AnUnexpectedSettingStillEndsTheBlinking ) {
   auto fan = led( "2" );
   ham.expectBatch( { read8( 0x0B ).answers( { 0x00 } ) } );
   ham.expectBatch( { write8( 0x0B, 0x60 ) } );
   fan->setLightSetting( PL_LED_BEACON );
   EXPECT_EQ( fan->setLightSetting( PL_LED_UNKNOWN ), 3 );
   EXPECT_TRUE( Led::notifyList_.empty() );
}

TEST_F( KeltPCA9506Test, ABlinkThatCantBeSavedStopsTheProcess ) {
   auto fan = led( "2" );
   EXPECT_DEATH(
      {
         ham.expectBatch( { read8( 0x0B ).answers( { 0x00 } ) } );
         ham.expectBatch( { write8( 0x0B, 0x40 ).fails( 6 ) } );
         fan->handleBlinkTimer( true );
      },
      ::testing::HasSubstr( "Assertion `status == PL_STATUS_OK' failed" ) );
}

TEST_F( KeltPCA9506Test, TheDescriptionDependsOnTheAirflow ) {
   auto bay = slot();
   expectModule( true );
   EXPECT_EQ( present( *bay ), "FAN-7 frontToBackAirflow 23000" );
   EXPECT_EQ( status, PL_STATUS_OK );
   EXPECT_TRUE( TestHost::traced( 5, "fan 2 fdl: FAN-7 frontToBackAirflow 23000" ) );
   EXPECT_TRUE( TestHost::traced( 5, "Creating new KeltPCA9506 Slot for Fan id 2" ) );
   EXPECT_EQ( ( *bay ).*revealed( IndexOfFansBay() ), 1 ); // zero-based
   expectModule( false );
   EXPECT_EQ( present( *bay ), "FAN-7 backToFrontAirflow 21000" );
}

TEST_F( KeltPCA9506Test, TheSameAirflowUsesTheCachedLine ) {
   auto bay = slot();
   expectModule( true );
   present( *bay );
   char *first = fdl;
   fdl = nullptr;
   expectModule( true );
   EXPECT_EQ( present( *bay ), "FAN-7 frontToBackAirflow 23000" );
   EXPECT_EQ( status, PL_STATUS_OK );
   EXPECT_NE( fdl, first );
   EXPECT_TRUE( TestHost::traced( 5, "Using cached fdl for fan 2" ) );
   free( first );
}

TEST_F( KeltPCA9506Test, ACachedTextThatCantBeCopiedReturns6 ) {
   auto bay = slot();
   expectModule( true );
   present( *bay );
   expectModule( true );
   TestHost::copiesTexts = false;
   EXPECT_EQ( present( *bay ), "" );
   EXPECT_EQ( status, 6 );
   EXPECT_TRUE( TestHost::traced( 0, "Error: KeltPCA9506::FanSlot strdup failed" ) );
   TestHost::copiesTexts = true;
   expectModule( true );
   EXPECT_EQ( present( *bay ), "FAN-7 frontToBackAirflow 23000" );
}

TEST_F( KeltPCA9506Test, AnEmptyBayReturns1AndClearsTheCache ) {
   auto bay = slot();
   expectModule( true );
   present( *bay );
   ham.expectBatch( { read8( 0x01 ).answers( { 0x08 } ) } );
   EXPECT_EQ( present( *bay ), "" );
   EXPECT_EQ( status, 1 );
   TestHost::traces.clear();
   expectModule( true );
   present( *bay );
   EXPECT_FALSE( TestHost::traced( 5, "Using cached fdl for fan 2" ) );
}

TEST_F( KeltPCA9506Test, EachPinThatCantBeReadIsTraced ) {
   auto bay = slot();
   ham.expectBatch( { read8( 0x01 ).fails( 6 ) } );
   EXPECT_EQ( present( *bay ), "" );
   EXPECT_EQ( status, 6 );
   EXPECT_TRUE( TestHost::traced( 0, "Error: status 6 reading fan 2 presence bit" ) );
   ham.expectBatch( { read8( 0x01 ).answers( { 0x00 } ) } );
   ham.expectBatch( { read8( 0x02 ).fails( 4 ) } );
   EXPECT_EQ( present( *bay ), "" );
   EXPECT_EQ( status, 4 );
   EXPECT_TRUE( TestHost::traced( 0, "Error: status 4 reading fan 2 F2B bit" ) );
}

TEST_F( KeltPCA9506Test, MissingArgumentsAndIdsOutOfRangeStopTheProcess ) {
   const std::pair<const char *, const char *> rows[] = { { "presenceBitOffset", "offsetIt" },
                                                          { "fanFdl", "fdlIt" },
                                                          { "rpmF2B", "f2bIt" },
                                                          { "rpmB2F", "b2fIt" },
                                                          { "modelName", "modelIt" } };
   for ( const auto &[key, iterator] : rows ) {
      const Arguments all = slotArguments;
      slotArguments.erase( key );
      EXPECT_DEATH( slot(), ::testing::HasSubstr( std::string( "Assertion `" ) + iterator +
                                                  " != slotArgs_.end()' failed" ) );
      slotArguments = all;
   }
   slotArguments.erase( "fanId" );
   EXPECT_DEATH( slot(), ::testing::HasSubstr(
                            R"(args.driverArgs.find( "fanId" ) != args.driverArgs.end())" ) );
   slotArguments["fanId"] = "6";
   EXPECT_DEATH( slot(), "fanId >= 1 && fanId <= 5" );
   EXPECT_DEATH( led( "0" ), "fanId >= 1 && fanId <= 5" );
   Drivers::DriverArgs none;
   EXPECT_DEATH(
      expander.newLed( none ),
      ::testing::HasSubstr( R"(args.driverArgs.find( "id" ) != args.driverArgs.end())" ) );
}

} // namespace
