#include "host/serve/LiveClock.h"

#include <boost/asio/io_context.hpp>
#include <gtest/gtest.h>

namespace Host {
namespace {

TEST( LiveClockTest, GoesUntilItIsNotWantedAnyMoreAndAgainWhenItIs ) {
   boost::asio::io_context loop{ 1 };
   int left = 3, ticks = 0;
   LiveClock clock( loop, std::chrono::milliseconds( 1 ), [&] {
      ++ticks;
      return --left > 0;
   } );
   clock.start();
   clock.start(); // it goes already
   loop.run();    // ends, since nothing waits any more
   EXPECT_EQ( ticks, 3 );
   left = 2;
   loop.restart();
   clock.start();
   loop.run();
   EXPECT_EQ( ticks, 5 );
}

TEST( LiveClockTest, PagesThatComeAllTheTimeDoNotPutItOff ) {
   boost::asio::io_context loop{ 1 };
   int ticks = 0;
   LiveClock clock( loop, std::chrono::milliseconds( 20 ), [&] {
      ++ticks;
      return false;
   } );
   const auto end = std::chrono::steady_clock::now() + std::chrono::seconds( 5 );
   while ( ticks == 0 && std::chrono::steady_clock::now() < end ) {
      clock.start();
      loop.run_one_for( std::chrono::milliseconds( 2 ) );
      loop.restart();
   }
   EXPECT_EQ( ticks, 1 );
}

} // namespace
} // namespace Host
