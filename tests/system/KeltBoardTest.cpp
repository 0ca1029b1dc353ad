// The whole Kelt board: orbis-host shows the values of the chips' physical models.
#include "RunningBoard.h"

#include <gmock/gmock.h>

#include <fmt/format.h>

namespace {

using ::testing::DoubleNear;

class KeltBoardTest : public ::testing::Test {
 protected:
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

TEST_F( KeltBoardTest, ShowsEveryCageAsTheModelHasIt ) {
   const std::map<std::string, std::map<std::string, double>> model = board.quantities();
   const Shown shown = board.show();
   const auto holds = [&]( const std::string &cage, const char *value, double wanted ) {
      const auto found = shown.values.find( cage + " " + value );
      ASSERT_NE( found, shown.values.end() ) << cage << " shows no " << value;
      EXPECT_EQ( found->second, wanted ) << cage << " " << value;
   };
   int there = 0;
   const auto isThere = [&]( const std::string &cage ) {
      const bool present = model.at( cage ).at( "presence" ) != 0;
      EXPECT_EQ( shown.absent.contains( cage ), !present ) << cage;
      there += present;
   };
   for ( int i = 1; i <= 38; ++i ) {
      const std::string cage = fmt::format( "qsfp{}", i );
      isThere( cage );
      holds( cage, "lp_mode", model.at( cage ).at( "lpMode" ) );
      holds( cage, "reset", model.at( cage ).at( "reset" ) );
      holds( cage, "interrupt", model.at( cage ).at( "interrupt" ) );
   }
   for ( int i = 1; i <= 48; ++i ) {
      const std::string cage = fmt::format( "sfp{}", i );
      isThere( cage );
      holds( cage, "tx_fault", model.at( cage ).at( "txFault" ) );
      holds( cage, "rx_los", model.at( cage ).at( "rxLos" ) );
      holds( cage, "tx_disable", model.at( cage ).at( "txDisable" ) );
   }
   EXPECT_GT( there, 43 ); // of 86: both are on the board
   EXPECT_LT( there, 80 );
}

TEST_F( KeltBoardTest, ShowsEverySlotAsItsModuleIs ) {
   const Shown shown = board.show();
   const std::map<std::string, std::string> wanted{
      { "fan1-slot", "frontToBackAirflow 24000 KF-4056" },
      { "fan2-slot", "frontToBackAirflow 24000 KF-4056" },
      { "fan3-slot", "frontToBackAirflow 24000 KF-4056" },
      { "fan4-slot", "frontToBackAirflow 24000 KF-4056" },
      { "fan5-slot", "frontToBackAirflow 24000 KF-4056" },
      { "psu1-slot", "KP-850AC-F 850 W frontToBackAirflow P2306A0017" },
      { "psu2-slot", "KP-850AC-F 850 W frontToBackAirflow P2311B0242" },
   };
   EXPECT_EQ( shown.texts, wanted );
}

TEST_F( KeltBoardTest, TheEnvironmentNamesABoardOnlyWhereNoneIsNamed ) {
   setenv( "ORBIS_BOARD", "/nowhere", 1 );
   EXPECT_EQ( board.host( { "check" } ).exitCode, 0 );
   EXPECT_EQ( board.host( { "gpio", "usb-power", "read" } ).exitCode, 0 );
   const auto read = [] {
      return TestSupport::StartedProgram( { ORBIS_HOST, "gpio", "usb-power", "read" } ).wait();
   };
   EXPECT_EQ( read(), 2 );
   setenv( "ORBIS_BOARD", BOARDS "/kelt", 1 );
   EXPECT_EQ( read(), 0 );
   unsetenv( "ORBIS_BOARD" );
   EXPECT_EQ( read(), 2 );
}

TEST_F( KeltBoardTest, TheServerKnowsTheHostByItsName ) {
   board.show();
   EXPECT_THAT( board.smbus( { "top", "--count", "1" } ),
                ::testing::HasSubstr( "\norbis-host (" ) );
}

TEST_F( KeltBoardTest, ASupplyOfAnUnknownModelIsUnmanaged ) {
   board.smbus( { "sim", "pull", "psu1" } );
   board.smbus( { "sim", "insert", "spare1" } );
   EXPECT_THAT( board.show().faults.at( "psu1-slot" ), ::testing::StartsWith( "unmanaged" ) );
}

} // namespace
