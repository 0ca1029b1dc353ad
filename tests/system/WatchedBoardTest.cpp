// orbis-host watch shows a pulled module as absent within two periods, and an inserted one as
// present. It reports a server that dies within one period.
#include "RunningBoard.h"

#include <gtest/gtest.h>

#include <csignal>

namespace {

class WatchedBoardTest : public ::testing::Test {
 protected:
   void TearDown() override {
      table->signal( SIGINT );
      EXPECT_EQ( table->wait(), 0 );
   }
   // Calls happens(). After it, the object's row may still have `was` in `periods` rows, then `is`.
   void expect( const char *object, const char *was, const char *is, int periods,
                const std::function<void()> &happens ) {
      board.waitForRow( object, was, at );
      happens();
      const size_t done = board.watched();
      at = board.waitForRow( object, is, done );
      EXPECT_LE( board.countRows( object, was, done, at ), periods ) << object << " " << is;
   }
   void pullAndInsert( const char *period, const char *module, const char *object,
                       const char *there, const char *gone ) {
      table = board.watch( period );
      expect( object, there, gone, 2, [&] { board.smbus( { "sim", "pull", module } ); } );
      expect( object, gone, there, 2, [&] { board.smbus( { "sim", "insert", module } ); } );
   }
   RunningBoard board{ "kelt" };
   std::unique_ptr<TestSupport::StartedProgram> table;
   size_t at = 0;
};

TEST_F( WatchedBoardTest, APulledSupplyIsAbsentWithinTwoPeriods ) {
   pullAndInsert( "1", "psu1", "psu1-slot", "KP-850AC-F", "absent" );
}

TEST_F( WatchedBoardTest, APulledFanModuleIsAbsentWithinTwoPeriods ) {
   // The expander's inputs are read again when they are more than two seconds old.
   pullAndInsert( "2", "fan1", "fan1-slot", "KF-4056", "absent" );
}

TEST_F( WatchedBoardTest, APulledTransceiverIsAbsentWithinTwoPeriods ) {
   pullAndInsert( "1", "qsfp1", "qsfp1", "qsfp1 #", "qsfp1 ." ); // the CPLD is polled every second
}

TEST_F( WatchedBoardTest, AServerThatDiesIsReportedWithinAPeriod ) {
   table = board.watch( "0.2" );
   expect( "temp-front", "24.5", "unreadable", 1, [&] { board.killServer(); } );
   board.startServer();
   board.waitForRow( "temp-front", "24.5", at );
}

} // namespace
