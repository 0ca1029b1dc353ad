#include "host/session/BackOff.h"

#include <gtest/gtest.h>

namespace Host {
namespace {

using namespace std::chrono_literals;

TEST( BackOffTest, AllowsTheFirstTryAtOnce ) { EXPECT_TRUE( BackOff().mayTry( Time() ) ); }

TEST( BackOffTest, DoublesTheWaitUpToAMinuteAndStartsAgainAfterASuccess ) {
   const Time now( 1h );
   BackOff backOff;
   for ( const auto wait : { 1s, 2s, 4s, 8s, 16s, 32s, 60s, 60s } ) {
      backOff.failed( now );
      EXPECT_EQ( backOff.nextTry(), now + wait );
      EXPECT_FALSE( backOff.mayTry( now + wait - 1ns ) );
      EXPECT_TRUE( backOff.mayTry( now + wait ) );
   }
   backOff.succeeded();
   backOff.failed( now );
   EXPECT_EQ( backOff.nextTry(), now + 1s );
}

TEST( BackOffTest, TakesOtherTimes ) {
   const Time now( 1h );
   BackOff backOff( 100ms, 300ms );
   for ( const auto wait : { 100ms, 200ms, 300ms, 300ms } ) {
      backOff.failed( now );
      EXPECT_EQ( backOff.nextTry(), now + wait );
   }
   backOff.succeeded();
   backOff.failed( now );
   EXPECT_EQ( backOff.nextTry(), now + 100ms );
}

TEST( BackOffTest, AllowsNoTryAfterGivingUp ) {
   BackOff backOff;
   backOff.giveUp();
   EXPECT_FALSE( backOff.mayTry( Time( 10'000h ) ) );
}

} // namespace
} // namespace Host
