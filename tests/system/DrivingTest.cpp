// Actions of the host reach the chips.
#include "RunningBoard.h"

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <thread>

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;
using Words = std::vector<std::string>;

class DrivingTest : public ::testing::Test {
 protected:
   void drive( const Words &words ) {
      const Ran ran = board.host( words );
      EXPECT_EQ( ran.exitCode, 0 ) << fmt::format( "{}", fmt::join( words, " " ) ) << ran.errors;
   }
   std::string answer( const Words &words ) {
      const Ran ran = board.host( words );
      EXPECT_EQ( ran.exitCode, 0 ) << fmt::format( "{}", fmt::join( words, " " ) ) << ran.errors;
      return ran.output;
   }
   // Waits until the quantity has this value. Returns false after twenty seconds.
   bool becomes( const std::string &whose, const std::string &name, double wanted ) {
      const auto end = std::chrono::steady_clock::now() + std::chrono::seconds( 20 );
      while ( std::chrono::steady_clock::now() < end ) {
         if ( std::abs( board.quantity( whose, name ) - wanted ) < 1 )
            return true;
         std::this_thread::sleep_for( std::chrono::milliseconds( 20 ) );
      }
      return false;
   }
   // A byte on the bus.
   std::string at( const std::string &chip, const std::string &offset ) {
      return board.smbus( { "read", chip, offset } );
   }
   static constexpr const char *system = "celestica:1:1:0x31";
   static constexpr const char *sfpCpld = "celestica:1:1:0x33";
   RunningBoard board{ "kelt" };
};

TEST_F( DrivingTest, BothRotorsOfAFanModule ) {
   drive( { "fan", "fan1", "12000" } );
   constexpr double drivePercent = 127 / 255. * 100; // 12000 of 24000, in 255 steps
   EXPECT_TRUE( becomes( "fan1.inlet", "drive", drivePercent ) );
   EXPECT_TRUE( becomes( "fan1.outlet", "drive", drivePercent ) );
}

TEST_F( DrivingTest, ASuppliesFan ) {
   drive( { "fan", "psu1-fan1", "16000" } );
   EXPECT_TRUE( becomes( "psu1.fan1", "drive", 80 ) );
}

TEST_F( DrivingTest, TheFaultsOfASupplyUntilSomebodyClearsThem ) {
   board.smbus( { "sim", "set", "psu1", "line", "0" } );
   const auto shown = [this] { return board.host( { "show" } ).output; };
   EXPECT_THAT( shown(),
                HasSubstr( "input undervoltage, unit off for insufficient input voltage" ) );
   board.smbus( { "sim", "set", "psu1", "line", "230" } );
   EXPECT_THAT( shown(), HasSubstr( "input undervoltage (over)" ) );
   drive( { "smbus", "psu1-status", "clear-faults" } );
   EXPECT_THAT( shown(), testing::Not( HasSubstr( "input undervoltage" ) ) );
}

TEST_F( DrivingTest, NoFaultsOfAChipThatIsNoSupply ) {
   const Ran ran = board.host( { "smbus", "psu1-fru", "clear-faults" } );
   EXPECT_EQ( ran.exitCode, 1 );
   EXPECT_THAT( ran.errors, HasSubstr( "psu1-fru: the driver doesn't support this: only an object "
                                       "with \"reads\": \"pmbus\" has faults to clear\n" ) );
}

TEST_F( DrivingTest, TheControlLinesOfCages ) {
   drive( { "xcvr", "qsfp1", "lpmode", "on" } );
   EXPECT_TRUE( becomes( "qsfp1", "lpMode", 1 ) );
   drive( { "xcvr", "qsfp38", "reset", "on" } );
   EXPECT_TRUE( becomes( "qsfp38", "reset", 1 ) );
   drive( { "xcvr", "qsfp38", "reset", "off" } );
   EXPECT_TRUE( becomes( "qsfp38", "reset", 0 ) );
   drive( { "xcvr", "sfp1", "txdisable", "on" } );
   EXPECT_TRUE( becomes( "sfp1", "txDisable", 1 ) );
}

TEST_F( DrivingTest, ALineThatACageDoesNotHaveIsReportedAndEndsNothing ) {
   const Ran ran = board.host( { "xcvr", "sfp1", "lpmode", "on" } );
   EXPECT_EQ( ran.exitCode, 1 );
   EXPECT_THAT( ran.errors, HasSubstr( "doesn't support" ) );
}

TEST_F( DrivingTest, FanLedsInTheirColours ) {
   const auto pins = [this]( int a ) {
      return std::pair( board.quantity( "fan-pins", fmt::format( "pin{}", a ) ),
                        board.quantity( "fan-pins", fmt::format( "pin{}", a + 1 ) ) );
   };
   drive( { "led", "fan1-led", "good" } );
   EXPECT_EQ( pins( 31 ), std::pair( 1., 0. ) );
   drive( { "led", "fan2-led", "bad" } );
   EXPECT_EQ( pins( 29 ), std::pair( 0., 1. ) );
   drive( { "led", "fan3-led", "off" } );
   EXPECT_EQ( pins( 35 ), std::pair( 1., 1. ) );
}

TEST_F( DrivingTest, LedsOfTheSfpCpld ) {
   drive( { "led", "psu2-led", "off" } );
   drive( { "led", "psu1-led", "good" } );
   drive( { "led", "system-led", "bad" } );
   EXPECT_EQ( at( sfpCpld, "0x303" ), "0x0b\n" ); // 1 is off
   drive( { "led", "system-led", "good" } );
   EXPECT_EQ( at( sfpCpld, "0x303" ), "0x08\n" );
}

TEST_F( DrivingTest, ALedThatBlinksByTheHostGoesOnAndOff ) {
   auto serve = board.serve( {} );
   drive( { "led", "psu1-led", "beacon" } );
   const auto is = [this]( char bit ) {
      for ( int look = 0; look < 500; ++look ) {
         const std::string byte = at( sfpCpld, "0x303" );
         if ( ( std::stoi( byte, nullptr, 16 ) >> 2 & 1 ) == bit )
            return true;
         std::this_thread::sleep_for( std::chrono::milliseconds( 10 ) );
      }
      return false;
   };
   EXPECT_TRUE( is( 1 ) );
   EXPECT_TRUE( is( 0 ) );
   EXPECT_TRUE( is( 1 ) );
   serve->signal( SIGTERM );
   EXPECT_EQ( serve->wait(), 0 );
}

TEST_F( DrivingTest, GpiosOfEveryCpld ) {
   struct {
      const char *name, *chip, *offset;
      int bit;
   } const lines[] = {
      { "usb-power", system, "0x110", 2 },
      { "mgmt-phy-reset", system, "0x111", 0 },
      { "qsfp-lamp-test", "celestica:1:1:0x32", "0x210", 3 },
      { "sfp-lamp-test", sfpCpld, "0x211", 5 },
   };
   for ( const auto &line : lines ) {
      const int before = std::stoi( at( line.chip, line.offset ), nullptr, 16 );
      const bool was = before >> line.bit & 1;
      EXPECT_EQ( answer( { "gpio", line.name, "read" } ), was ? "1\n" : "0\n" ) << line.name;
      drive( { "gpio", line.name, was ? "clear" : "set" } );
      EXPECT_EQ( std::stoi( at( line.chip, line.offset ), nullptr, 16 ), before ^ 1 << line.bit )
         << line.name;
      EXPECT_EQ( answer( { "gpio", line.name, "read" } ), was ? "0\n" : "1\n" ) << line.name;
   }
}

TEST_F( DrivingTest, ProxiesReadAndWriteModules ) {
   EXPECT_EQ( answer( { "smbus", "qsfp1-eeprom", "read-byte", "0" } ), "0x11\n" );
   EXPECT_EQ( answer( { "smbus", "sfp1-eeprom", "read-byte", "0" } ), "0x03\n" );
   EXPECT_EQ( answer( { "smbus", "psu1-fru", "i2c-block-read", "0", "8" } ),
              "01 00 00 00 01 00 00 fe\n" ); // the common header of a FRU
   drive( { "smbus", "psu1-fru", "write-byte", "200", "0x5a" } );
   // It acknowledges, but it is write-protected.
   EXPECT_EQ( answer( { "smbus", "psu1-fru", "read-byte", "200" } ), "0xff\n" );
}

TEST_F( DrivingTest, AnOperationThatTheDriverDoesNotHaveIsReportedAndEndsNothing ) {
   const Ran ran = board.host( { "smbus", "qsfp1-eeprom", "quick-command", "0" } );
   EXPECT_EQ( ran.exitCode, 1 );
   EXPECT_THAT( ran.errors, HasSubstr( "doesn't support" ) );
   EXPECT_THAT( board.host( { "system", "reload-cause" } ).errors, HasSubstr( "doesn't support" ) );
}

TEST_F( DrivingTest, PowerIsSwitchedOffAndOn ) {
   drive( { "fan", "fan1", "24000" } );
   EXPECT_TRUE( becomes( "fan1.inlet", "drive", 100 ) );
   board.host( { "system", "powercycle", "--yes" } );
   EXPECT_TRUE( becomes( "fan1.inlet", "drive", 128 / 255. * 100 ) ); // the value of the boot code
   EXPECT_EQ( board.show().exitCode, 0 );
   board.host( { "system", "poweroff", "--yes" } );
   EXPECT_THAT( board.smbus( { "sim", "list" } ), HasSubstr( "power off" ) );
   EXPECT_THAT( board.show().faults.at( "usb-power" ), StartsWith( "unreadable" ) );
   board.smbus( { "sim", "power", "on" } );
   EXPECT_EQ( board.show().exitCode, 0 );
}

TEST_F( DrivingTest, PowerStaysOnWithoutAYes ) {
   const Ran ran = board.host( { "system", "poweroff" } );
   EXPECT_NE( ran.exitCode, 0 );
   EXPECT_THAT( board.smbus( { "sim", "list" } ), HasSubstr( "power on" ) );
}

} // namespace
