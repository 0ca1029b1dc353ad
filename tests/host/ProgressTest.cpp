#include "host/terminal/Progress.h"

#include <gmock/gmock.h>

namespace Host {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;

class ProgressTest : public ::testing::Test {
 protected:
   // What is printed of three of four objects at this time after the start.
   static std::string printed( bool isTerminal, Clock::duration after ) {
      ::testing::internal::CaptureStderr();
      const Time start{ 1h };
      {
         Progress progress( isTerminal, start );
         progress.update( 1, 4, "pl_fan_add", start );
         progress.update( 3, 4, "temperature", start + after );
      }
      return ::testing::internal::GetCapturedStderr();
   }
};

TEST_F( ProgressTest, DrawsABarAndClearsIt ) {
   EXPECT_EQ( printed( true, 500ms ),
              "\r\x1b[K[######################--------] 3/4 temperature\r\x1b[K" );
}

TEST_F( ProgressTest, PrintsNothingInTheFirstHalfSecond ) {
   EXPECT_EQ( printed( true, 499ms ), "" );
}

TEST_F( ProgressTest, PrintsNothingWhereThereIsNoTerminal ) {
   EXPECT_EQ( printed( false, 1h ), "" );
}

} // namespace
} // namespace Host
