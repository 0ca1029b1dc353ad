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

} // namespace
} // namespace Host
