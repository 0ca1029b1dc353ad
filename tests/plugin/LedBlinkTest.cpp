#include "OrbisGeneric/Components/Led.h"
#include "OrbisGeneric/Drivers/Drivers.h"
#include "support/PluginFixture.h"

namespace {

using Component::LogicalDevice::Led;

std::string calls; // "a0 b0": LED and phase, in the order of the calls

struct BlinkingLed : Led {
   explicit BlinkingLed( char letter ) : name( letter ) { usesBlinkTimer = true; }
   bool handleBlinkTimer( bool on ) override {
      calls += std::string( calls.empty() ? "" : " " ) + name + ( on ? "1" : "0" );
      return stays;
   }
   pl_status setLightSetting( pl_led_status ) override { return PL_STATUS_OK; }
   char name;
   bool stays = true;
};

const bool phaseOfAFreshProcess = Led::blinkStatus_;

class LedBlinkTest : public PluginFixture {
 protected:
   LedBlinkTest() {
      Led::createBlinkTimer();
      calls.clear();
   }
   static pl_timer &timer() { return *TestHost::timers.at( 0 ); }
   static std::string tick() {
      calls.clear();
      timer().expire();
      return calls;
   }
   BlinkingLed a{ 'a' }, b{ 'b' }, c{ 'c' };
};

TEST_F( LedBlinkTest, TheTimerIsMadeOnceAndNotArmed ) {
   Led::createBlinkTimer();
   EXPECT_EQ( TestHost::timers.size(), 1u );
   EXPECT_FALSE( timer().armed );
   EXPECT_EQ( TestHost::tracedAt( 0 ),
              std::vector<std::string>{ "creating unique led blink timer" } );
}

TEST_F( LedBlinkTest, TheFirstPhaseIsOff ) { EXPECT_FALSE( phaseOfAFreshProcess ); }

TEST_F( LedBlinkTest, TheFirstLedArmsTheTimerAndLaterLedsJoinItsPhase ) {
   Led::notifyOnBlink( &a );
   EXPECT_TRUE( timer().armed );
   EXPECT_EQ( timer().milliseconds, 1000u );
   EXPECT_EQ( timer().timesSet, 1 );
   Led::notifyOnBlink( &b ); // some time later
   EXPECT_EQ( timer().timesSet, 1 );
   EXPECT_EQ( tick(), "a0 b0" );
   EXPECT_EQ( tick(), "a1 b1" );
   EXPECT_EQ( tick(), "a0 b0" );
   EXPECT_TRUE( timer().armed );
   EXPECT_TRUE( TestHost::traced( 4, "notifyOnBlink() adding led to blink notification list" ) );
   EXPECT_TRUE(
      TestHost::traced( 4, "handleBlinkTimerCallback() led blink timer hit notifying 2 leds" ) );
}

TEST_F( LedBlinkTest, TheLedAfterARemovedLedIsSkipped ) {
   Led::notifyOnBlink( &a );
   Led::notifyOnBlink( &b );
   Led::notifyOnBlink( &c );
   a.stays = false;
   EXPECT_EQ( tick(), "a0 c0" );
   EXPECT_EQ( tick(), "b1 c1" );
}

TEST_F( LedBlinkTest, RemovingTheLastLedRestartsTheLoop ) {
   Led::notifyOnBlink( &a );
   Led::notifyOnBlink( &b );
   Led::notifyOnBlink( &c );
   c.stays = false;
   EXPECT_EQ( tick(), "a0 b0 c0 a0 b0" );
   EXPECT_EQ( tick(), "a1 b1" );
}

TEST_F( LedBlinkTest, RemovingTheLastLedButOneEndsTheLoop ) {
   Led::notifyOnBlink( &a );
   Led::notifyOnBlink( &b );
   a.stays = false;
   EXPECT_EQ( tick(), "a0" );
   EXPECT_EQ( Led::notifyList_, std::list<Led *>{ &b } );
}

TEST_F( LedBlinkTest, AnEmptyListStopsTheTimerAndStillChangesThePhase ) {
   Led::notifyOnBlink( &a );
   a.stays = false;
   EXPECT_EQ( tick(), "a0" );
   EXPECT_TRUE( Led::notifyList_.empty() );
   EXPECT_FALSE( timer().armed );
   EXPECT_TRUE( Led::blinkStatus_ );
   Led::notifyOnBlink( &b ); // arms the timer again, with the next phase
   EXPECT_TRUE( timer().armed );
   EXPECT_EQ( tick(), "b1" );
}

TEST_F( LedBlinkTest, AnLedCanBeOnTheListTwice ) {
   Led::notifyOnBlink( &a );
   Led::notifyOnBlink( &a );
   EXPECT_EQ( tick(), "a0 a0" );
}

TEST_F( LedBlinkTest, EverySettingHasAName ) {
   const char *const names[] = { "Off", "Good", "Warning", "Bad", "Inactive", "Unknown", "Beacon" };
   for ( int status = 0; status < 7; ++status )
      EXPECT_STREQ( Led::getLedStatusString( static_cast<pl_led_status>( status ) ),
                    names[status] );
   EXPECT_DEATH(
      Led::getLedStatusString( static_cast<pl_led_status>( 7 ) ),
      ::testing::AllOf( ::testing::HasSubstr( "OrbisGeneric/Components/Led.cpp" ),
                        ::testing::HasSubstr(
                           "`( unsigned )status < sizeof ( strs ) / sizeof ( *strs )' failed" ) ) );
}

class LedTimerTest : public PluginFixture {};

TEST_F( LedTimerTest, AHostThatMakesNoTimerStopsTheProcess ) {
   TestHost::makesTimers = false;
   EXPECT_DEATH( Led::createBlinkTimer(),
                 "0 failed to create blink timer\n(.|\n)*Assertion `blinkTimer_' failed" );
}

TEST_F( LedTimerTest, NothingBlinksWithoutTheTimer ) {
   BlinkingLed led( 'a' );
   EXPECT_DEATH( Led::notifyOnBlink( &led ), "Assertion `blinkTimer_' failed" );
}

struct LedDriver : Component::HardwareDevice {
   Led *newLed( const Drivers::DriverArgs & ) override {
      leds.push_back( std::make_unique<BlinkingLed>( 'x' ) );
      leds.back()->usesBlinkTimer = blinks;
      return leds.back().get();
   }
   bool blinks = true;
   std::vector<std::unique_ptr<BlinkingLed>> leds;
};

TEST_F( LedTimerTest, AddingASoftwareBlinkingLedMakesTheTimerOnce ) {
   LedDriver driver;
   Drivers::drivers["test"] = [&]( auto &, auto * ) { return &driver; };
   connect( i2cTopology( "{'did':1}" ) );
   const char *document = json( "{'did':1,'driver':'test','address':{'address':1}}" );
   driver.blinks = false;
   pl_led_add( document );
   EXPECT_TRUE( TestHost::timers.empty() );
   driver.blinks = true;
   pl_led_add( document );
   pl_led_add( document );
   EXPECT_EQ( TestHost::timers.size(), 1u );
   Drivers::drivers.erase( "test" );
}

} // namespace
