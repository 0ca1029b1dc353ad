// The whole Kelt board: what is shown is what the chips' physical model holds, what is driven
// reaches it, and what is pulled is missed.
#include "RunningBoard.h"

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <thread>

namespace {

using ::testing::DoubleNear;

class KeltBoardTest : public ::testing::Test {
 protected:
   // Waits until the model's quantity is this; false when it is not within twenty seconds.
   bool becomes( const std::string &whose, const std::string &name, double wanted ) {
      const auto end = std::chrono::steady_clock::now() + std::chrono::seconds( 20 );
      while ( std::chrono::steady_clock::now() < end ) {
         if ( std::abs( board.quantity( whose, name ) - wanted ) < 1 )
            return true;
         std::this_thread::sleep_for( std::chrono::milliseconds( 20 ) );
      }
      return false;
   }
   RunningBoard board{ "kelt" };
};

TEST_F( KeltBoardTest, ShowsWhatTheModelHolds ) {
   const Shown shown = board.show();
   EXPECT_EQ( shown.exitCode, 0 );
   struct {
      const char *shown, *whose, *quantity;
      double resolution; // of the number format, or of what rounding adds up to
   } const rows[] = {
      { "psu1 input_voltage", "psu1", "line", 0.5 },
      { "psu1 input_current", "psu1", "inputCurrent", 0.002 },
      { "psu1 input_power", "psu1", "inputPower", 0.5 },
      { "psu1 output_voltage", "psu1", "outputVoltage", 0.002 },
      { "psu1 output_current", "psu1", "outputCurrent", 0.05 },
      { "psu1 output_power", "psu1", "outputPower", 0.5 },
      { "psu2 input_voltage", "psu2", "line", 0.5 },
      { "psu2 input_current", "psu2", "inputCurrent", 0.002 },
      { "psu2 input_power", "psu2", "inputPower", 0.5 },
      { "psu2 output_voltage", "psu2", "outputVoltage", 0.002 },
      { "psu2 output_current", "psu2", "outputCurrent", 0.05 },
      { "psu2 output_power", "psu2", "outputPower", 0.5 },
      { "psu1-fan1 speed", "psu1.fan1", "rpm", 16 },
      { "psu1-fan2 speed", "psu1.fan2", "rpm", 16 },
      { "psu2-fan1 speed", "psu2.fan1", "rpm", 16 },
      { "psu2-fan2 speed", "psu2.fan2", "rpm", 16 },
      { "psu1-inlet temperature", "psu1", "inlet", 0.1 },
      { "psu1-hotspot temperature", "psu1", "hotSpot", 0.1 },
      { "psu2-inlet temperature", "psu2", "inlet", 0.1 },
      { "psu2-hotspot temperature", "psu2", "hotSpot", 0.1 },
   };
   for ( const auto &row : rows )
      EXPECT_THAT( shown.values.at( row.shown ),
                   DoubleNear( board.quantity( row.whose, row.quantity ), row.resolution ) )
         << row.shown;
   for ( const std::string fan : { "fan1", "fan2", "fan3", "fan4", "fan5" } )
      EXPECT_THAT( shown.values.at( fan + " speed" ),
                   DoubleNear( ( board.quantity( fan + ".inlet", "rpm" ) +
                                 board.quantity( fan + ".outlet", "rpm" ) ) /
                                  2,
                               60 ) ) // a step of the tach's count at this speed
         << fan;
}

TEST_F( KeltBoardTest, DrivesFansAndCages ) {
   EXPECT_EQ( board.host( { "fan", "fan1", "12000" } ), 0 );
   EXPECT_TRUE( becomes( "fan1.inlet", "drive", 12000 * 255 / 24000 * 100 / 255. ) );
   EXPECT_EQ( board.host( { "xcvr", "qsfp1", "lpmode", "on" } ), 0 );
   EXPECT_TRUE( becomes( "qsfp1", "lpMode", 1 ) );
   EXPECT_EQ( board.host( { "xcvr", "qsfp1", "reset", "on" } ), 0 );
   EXPECT_TRUE( becomes( "qsfp1", "reset", 1 ) );
   EXPECT_EQ( board.host( { "xcvr", "sfp1", "txdisable", "on" } ), 0 );
   EXPECT_TRUE( becomes( "sfp1", "txDisable", 1 ) );
}

TEST_F( KeltBoardTest, TheEnvironmentNamesABoardOnlyWhereNoneIsNamed ) {
   setenv( "ORBIS_BOARD", "/nowhere", 1 );
   EXPECT_EQ( board.host( { "check" } ), 0 );
   EXPECT_EQ( board.host( { "gpio", "usb-power", "read" } ), 0 );
   const auto read = [] {
      return SmbusdTest::StartedProgram( { ORBIS_HOST, "gpio", "usb-power", "read" } ).wait();
   };
   EXPECT_EQ( read(), 2 );
   setenv( "ORBIS_BOARD", BOARDS "/kelt", 1 );
   EXPECT_EQ( read(), 0 );
   unsetenv( "ORBIS_BOARD" );
   EXPECT_EQ( read(), 2 );
}

TEST_F( KeltBoardTest, WhatIsPulledWhileWatchedIsMissedAndComesBack ) {
   auto watch = board.watch( "0.5" );
   size_t at = board.waitForRow( "psu1-slot", "KP-850AC-F", 0 );
   for ( const char *module : { "psu1", "fan1", "qsfp1" } )
      board.smbus( { "sim", "pull", module } );
   const size_t pulled = at;
   board.waitForRow( "psu1-slot", "absent", pulled );
   board.waitForRow( "fan1-slot", "absent", pulled );
   at = board.waitForRow( "qsfp1", "qsfp1 .", pulled );
   for ( const char *module : { "psu1", "fan1", "qsfp1" } )
      board.smbus( { "sim", "insert", module } );
   board.waitForRow( "psu1-slot", "KP-850AC-F", at );
   board.waitForRow( "fan1-slot", "KF-4056", at );
   board.waitForRow( "qsfp1", "qsfp1 #", at );
   watch->signal( SIGINT );
   EXPECT_EQ( watch->wait(), 0 );
}

TEST_F( KeltBoardTest, ASupplyOfAnUnknownModelIsThereAndUnmanaged ) {
   board.smbus( { "sim", "pull", "psu1" } );
   board.smbus( { "sim", "insert", "spare1" } );
   EXPECT_THAT( board.show().faults.at( "psu1-slot" ), ::testing::StartsWith( "unmanaged" ) );
}

} // namespace
