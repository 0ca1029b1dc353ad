#include "host/session/ReadingClassifier.h"

#include <gtest/gtest.h>

namespace Host {
namespace {

using namespace std::chrono_literals;
using BoardFiles::Kind;

// A slot and a cage. Most cases are in PollsTest and SupervisorTest.
class ReadingClassifierTest : public ::testing::Test {
 protected:
   Reading classify( Reading reading, size_t object = 0 ) {
      at = classifier.classify( reading, object, now );
      return reading;
   }
   void hear( const Trace &trace ) { classifier.heard( trace, {}, now ); }

   const BoardFiles::Board board{
      .objects = { { .kind = Kind::Slot, .did = 1, .address = 0x58 },
                   { .kind = Kind::Xcvr, .did = 2 } },
      .traces = { .faults = { "execute: " }, .unmanaged = "Unknown", .pollDone = "Polled" }
   };
   const Reading absent{ .name = "presence", .state = State::Absent };
   Time now{ 1h }, at{};
   ReadingClassifier classifier{ board, Limits{} };
};

TEST_F( ReadingClassifierTest, ForgetsTheTracesOfTheOperationBefore ) {
   hear( { 0, "Unknown model", {} } );
   EXPECT_EQ( classify( absent ).state, State::Unmanaged );
   EXPECT_EQ( at, now );
   classifier.operationBegins();
   EXPECT_EQ( classify( absent ).state, State::Absent );
   EXPECT_EQ( classifier.faultWords(), "" );
}

TEST_F( ReadingClassifierTest, ExplainsAnUnreadableReadingOnlyWhereItHasNoWords ) {
   hear( { 3, "execute: stuck bus", {} } );
   EXPECT_EQ( classify( { .state = State::Unreadable } ).fault.words, "stuck bus" );
   EXPECT_EQ( classify( { .state = State::Unreadable, .fault = { {}, "own" } } ).fault.words,
              "own" );
   EXPECT_EQ( classify( { .state = State::Ok } ).fault.words, "" );
}

TEST_F( ReadingClassifierTest, IgnoresATraceOfAnObjectThatTheBoardDoesNotHave ) {
   hear( { 0, "Polled", 2 } );
   hear( { 0, "Polled", SIZE_MAX } );
   EXPECT_EQ( classify( { .name = "presence", .value = true }, 1 ).state, State::Ok );
}

} // namespace
} // namespace Host
