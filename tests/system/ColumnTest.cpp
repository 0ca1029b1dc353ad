#include "RunningBoard.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

namespace {

using ::testing::HasSubstr;

TEST( ColumnTest, ShowsEveryTemperatureOfTheKeltBoardAsItsChipHasIt ) {
   RunningBoard board( "kelt" );
   const Shown shown = board.show();
   EXPECT_EQ( shown.exitCode, 0 );
   EXPECT_EQ( shown.values.at( "temp-front temperature" ), 24.5 ); // behind a mux
   EXPECT_EQ( shown.values.at( "temp-rear temperature" ), 31.0 );  // same address, another channel
   EXPECT_EQ( shown.values.at( "temp-asic temperature" ), 58.5 );  // behind two muxes
   EXPECT_EQ( shown.values.at( "temp-board temperature" ), -3.0 ); // on the accelerator's bus
   EXPECT_EQ( shown.values.at( "temp-cpu temperature" ), 47.0 );   // on an I2C adapter
}

class ThermometerTest : public ::testing::Test {
 protected:
   static constexpr const char *topology =
      R"([{"type":"Celestica","ham":"OrbisSmbus","accelerators":[{"id":2,"busses":[{"id":5,
         "devices":[{"did":1,"address":{"address":79}}]}]}]}])";
   static constexpr const char *objects =
      R"([{"type":"temp_sensor","name":"t","device":{"did":1,"driver":"LM75",
         "address":{"address":79}},"alert":60.0,"critical":72.5}])";
   static std::string simulation( double celsius, const char *more = "" ) {
      return fmt::format( R"({{"seed":1,"chips":[{{"did":1,"name":"t","chip":"LM75",)"
                          R"("temperature":{}{}}}]}})",
                          celsius, more );
   }
};

TEST_F( ThermometerTest, ReadsEitherSideOfZeroAndBothEndsOfTheRange ) {
   for ( double celsius : { -55.0, -25.0, -1.0, 0.0, 0.5, 1.0, 25.5, 124.5 } ) {
      RunningBoard board( topology, objects, simulation( celsius ) );
      EXPECT_EQ( board.show().values.at( "t temperature" ), celsius );
   }
}

// The driver adds the half degree to the magnitude; the chip's own format has it the other way.
TEST_F( ThermometerTest, AHalfDegreeBelowZeroReadsADegreeLow ) {
   for ( double celsius : { -0.5, -3.5 } ) {
      RunningBoard board( topology, objects, simulation( celsius ) );
      EXPECT_EQ( board.show().values.at( "t temperature" ), celsius - 1 );
   }
}

TEST_F( ThermometerTest, BringingTheBoardUpWritesBothThresholdsToTheChip ) {
   RunningBoard board( topology, objects, simulation( 20 ) );
   board.show();
   EXPECT_THAT( board.smbus( { "read", "celestica:2:5:0x4f", "2", "--size", "2" } ),
                HasSubstr( "0x3c 0x00" ) ); // 60.0
   EXPECT_THAT( board.smbus( { "read", "celestica:2:5:0x4f", "3", "--size", "2" } ),
                HasSubstr( "0x48 0x80" ) ); // 72.5
}

TEST_F( ThermometerTest, ABadBoardFileIsRefusedBeforeThePlugInIsLoaded ) {
   RunningBoard board( topology,
                       R"([{"type":"temp_sensor","name":"t","device":{"did":1,"driver":"LM75"},)"
                       R"("alert":60.0,"critical":72.5}])",
                       simulation( 20 ) );
   EXPECT_EQ( board.host( { "show" } ).exitCode, 3 );
}

} // namespace
