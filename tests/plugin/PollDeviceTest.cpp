#include "OrbisGeneric/Components/PollDevice.h"
#include "support/PluginFixture.h"

namespace {

struct Polled : Component::PollHardwareDevice {
   void pollCallback() override {
      ++polls;
      armedInCallback = TestHost::timers.at( 0 )->armed;
   }
   int polls = 0;
   bool armedInCallback = true;
};

class PollDeviceTest : public PluginFixture {
 protected:
   pl_timer &timer() { return *TestHost::timers.at( 0 ); }
   Polled device;
};

TEST_F( PollDeviceTest, MakesATimerThatIsNotArmed ) {
   ASSERT_EQ( TestHost::timers.size(), 1u );
   EXPECT_FALSE( timer().armed );
   EXPECT_EQ( timer().context, static_cast<Component::PollHardwareDevice *>( &device ) );
   EXPECT_FALSE( device.running );
   EXPECT_TRUE( TestHost::traced( 0, "creating timer" ) );
}

TEST_F( PollDeviceTest, DeletesItsTimer ) {
   { Polled other; }
   EXPECT_TRUE( TestHost::timers.at( 1 )->deleted );
   EXPECT_TRUE( TestHost::traced( 0, "destroying timer" ) );
}

TEST_F( PollDeviceTest, DoesNotStartWithoutAnInterval ) {
   EXPECT_FALSE( device.pollStart() );
   EXPECT_EQ( timer().timesSet, 0 );
   EXPECT_TRUE( TestHost::traced( 0, "no polling interval set" ) );
}

TEST_F( PollDeviceTest, StartsOnce ) {
   device.pollInterval = 250;
   EXPECT_TRUE( device.pollStart() );
   EXPECT_TRUE( device.running );
   EXPECT_EQ( timer().milliseconds, 250u );
   EXPECT_TRUE( TestHost::traced( 0, "setting polling interval to 250ms" ) );
   EXPECT_TRUE( device.pollStart() );
   EXPECT_EQ( timer().timesSet, 1 );
}

TEST_F( PollDeviceTest, StopsOnlyARunningTimer ) {
   EXPECT_TRUE( device.pollStop() );
   EXPECT_EQ( timer().timesCancelled, 0 );
   device.pollInterval = 250;
   device.pollStart();
   EXPECT_TRUE( device.pollStop() );
   EXPECT_EQ( timer().timesCancelled, 1 );
   EXPECT_FALSE( device.running );
}

TEST_F( PollDeviceTest, EachExpiryPollsOnceAndArmsTheSameInterval ) {
   device.pollInterval = 250;
   device.pollStart();
   timer().expire();
   EXPECT_EQ( device.polls, 1 );
   EXPECT_FALSE( device.armedInCallback ); // the period runs from the end of the callback
   EXPECT_TRUE( timer().armed );
   EXPECT_EQ( timer().timesSet, 2 );
   EXPECT_EQ( timer().milliseconds, 250u );
   EXPECT_TRUE( TestHost::traced( 6, "pollCallbackWrapper" ) );
}

TEST_F( PollDeviceTest, AFailedArmIsTracedAndKeepsTheState ) {
   device.pollInterval = 250;
   TestHost::armsTimers = false;
   EXPECT_FALSE( device.pollStart() );
   EXPECT_FALSE( device.running );
   EXPECT_TRUE( TestHost::traced( 0, "failed to set timer interval" ) );
}

TEST_F( PollDeviceTest, ATimerThatTheHostCantMakeIsNeverSetCancelledOrDeleted ) {
   TestHost::makesTimers = false;
   {
      Polled other;
      other.pollInterval = 250;
      EXPECT_FALSE( other.pollStart() );
      EXPECT_TRUE( TestHost::traced( 0, "failed to set timer interval" ) );
      other.running = true;
      EXPECT_FALSE( other.pollStop() );
   } // the timer of TestHost can't be null
}

TEST_F( PollDeviceTest, AFailedRearmEndsThePollingUntilItIsReset ) {
   device.pollInterval = 250;
   device.pollStart();
   TestHost::armsTimers = false;
   timer().expire();
   EXPECT_FALSE( timer().armed );
   EXPECT_TRUE( device.running );
   TestHost::armsTimers = true;
   EXPECT_TRUE( device.pollStart() );
   EXPECT_FALSE( timer().armed ); // `running` is still true
   EXPECT_TRUE( device.pollReset() );
   EXPECT_TRUE( timer().armed );
}

TEST_F( PollDeviceTest, AFailedCancelIsTracedAndPollingContinues ) {
   device.pollInterval = 250;
   device.pollStart();
   TestHost::cancelsTimers = false;
   EXPECT_FALSE( device.pollStop() );
   EXPECT_TRUE( device.running );
   EXPECT_TRUE( TestHost::traced( 0, "failed to cancel timer" ) );
}

} // namespace
