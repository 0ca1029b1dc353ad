// The LEDs of the fan modules.
#include "support/KeltPCA9506Fixture.h"

namespace {

class KeltFanLedTest : public KeltPCA9506Fixture {};

TEST_F( KeltFanLedTest, EachFanLedHasTwoActiveLowPins ) {
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

TEST_F( KeltFanLedTest, TheFirstFanLedUsesTwoBanks ) {
   auto fan = led( "1" );
   ham.expectBatch( { read8( 0x0B ).answers( { 0x00 } ) } );
   ham.expectBatch( { read8( 0x0C ).answers( { 0x03 } ) } );
   ham.expectBatch( { write8( 0x0B, 0x80 ), write8( 0x0C, 0x02 ) } );
   EXPECT_EQ( fan->setLightSetting( PL_LED_GOOD ), PL_STATUS_OK );
}

TEST_F( KeltFanLedTest, AnLedCantShowInactiveOrUnknown ) {
   auto fan = led( "2" );
   EXPECT_EQ( fan->setLightSetting( PL_LED_INACTIVE ), 3 );
   EXPECT_EQ( fan->setLightSetting( PL_LED_UNKNOWN ), 3 );
   EXPECT_TRUE( TestHost::traced( 6, "led 1 was given an unexpected setting 5" ) );
}

TEST_F( KeltFanLedTest, ReturnsTheStatusOfAFailedSave ) {
   auto fan = led( "2" );
   ham.expectBatch( { read8( 0x0B ).answers( { 0 } ) } );
   ham.expectBatch( { write8( 0x0B, 0x60 ).fails( 6 ) } );
   EXPECT_EQ( fan->setLightSetting( PL_LED_OFF ), 6 );
}

TEST_F( KeltFanLedTest, ABeaconThatIsSetTwiceBlinksRedOnce ) {
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

TEST_F( KeltFanLedTest, AnUnexpectedSettingStillEndsTheBlinking ) {
   auto fan = led( "2" );
   ham.expectBatch( { read8( 0x0B ).answers( { 0x00 } ) } );
   ham.expectBatch( { write8( 0x0B, 0x60 ) } );
   fan->setLightSetting( PL_LED_BEACON );
   EXPECT_EQ( fan->setLightSetting( PL_LED_UNKNOWN ), 3 );
   EXPECT_TRUE( Led::notifyList_.empty() );
}

TEST_F( KeltFanLedTest, ABlinkThatCantBeSavedStopsTheProcess ) {
   auto fan = led( "2" );
   EXPECT_DEATH(
      {
         ham.expectBatch( { read8( 0x0B ).answers( { 0x00 } ) } );
         ham.expectBatch( { write8( 0x0B, 0x40 ).fails( 6 ) } );
         fan->handleBlinkTimer( true );
      },
      ::testing::HasSubstr( "Assertion `status == PL_STATUS_OK' failed" ) );
}

} // namespace
