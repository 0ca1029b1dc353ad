// The simulated Kelt board, exported to the kernel with an adapter for each bus: read by the
// kernel's drivers, by i2c-tools, and by a second server through i2c-dev.
#include "smbusd/export/ExportedAdapter.h"
#include "Agreement.h"
#include "Linux.h"
#include "PrivateFolder.h"
#include "Shown.h"
#include "StartedProgram.h"

#include <chrono>
#include <csignal>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <rapidjson/document.h>
#include <sstream>
#include <thread>

namespace RealTest {

namespace {

using ::testing::DoubleNear;
using ::testing::HasSubstr;
using TestSupport::StartedProgram;

const std::vector<std::string> busses{ "scd(4):1:2", "scd(4):1:3", "scd(4):1:4",    "scd(4):1:5",
                                       "scd(4):2:0", "scd(4):2:1", "celestica:1:1", "i2c:0" };

class ExportedAdapterTest : public ::testing::Test {
 protected:
   static void SetUpTestSuite() {
      folder = std::make_unique<TestSupport::PrivateFolder>();
      std::vector<std::string> command{ ORBIS_SMBUSD,
                                        "--socket",
                                        exporter(),
                                        "--simulate",
                                        BOARDS "/kelt/topology.json",
                                        "--simulation",
                                        BOARDS "/kelt/simulation.json",
                                        "--speed",
                                        "0" };
      for ( const std::string &bus : busses )
         command.insert( command.end(), { "--export-adapter", bus } );
      exporting = std::make_unique<StartedProgram>( command );
      ASSERT_TRUE( exporting->waitForError( "serving" ) ) << exporting->errors();
      // The lm75 driver searches every adapter. It finds two of our chips: those not behind a mux.
      found = devicesOf( "lm75" );
      for ( const std::string &device : found )
         writeFile( "/sys/bus/i2c/drivers/lm75/unbind", device );
      driving = startServer( linux(), {} );
   }
   static void TearDownTestSuite() {
      stop( driving );
      stop( exporting );
      folder.reset();
   }
   static void stop( std::unique_ptr<StartedProgram> &server ) {
      server->signal( SIGTERM );
      EXPECT_EQ( server->wait(), 0 ) << server->errors();
      server.reset();
   }

   static std::string exporter() { return folder->file( "exporter.sock" ); }
   static std::string linux() { return folder->file( "linux.sock" ); }
   static unsigned adapter( const std::string &bus ) {
      return Smbusd::Export::findExported( bus, {} ).value();
   }
   // A second server of the same board, through the adapters.
   static std::unique_ptr<StartedProgram> startServer( const std::string &socket,
                                                       const std::vector<std::string> &options ) {
      std::string routes;
      for ( const std::string &bus : busses )
         routes += fmt::format( R"({}{{ "bus": "{}", "adapter": {} {} }})",
                                routes.empty() ? "" : ", ", bus, nameOf( bus ),
                                bus == "celestica:1:1" ? R"(, "chips": [
                                   { "address": 49, "offsetBytes": 2 },
                                   { "address": 50, "offsetBytes": 2 },
                                   { "address": 51, "offsetBytes": 2 } ])"
                                                       : "" );
      std::vector<std::string> command{ ORBIS_SMBUSD, "--socket", socket, "--routes",
                                        folder->write( "routes.json",
                                                       "{ \"routes\": [" + routes + "] }" ) };
      command.insert( command.end(), options.begin(), options.end() );
      auto server = std::make_unique<StartedProgram>( command );
      EXPECT_TRUE( server->waitForError( "serving" ) ) << server->errors();
      return server;
   }
   // By number, by name and by path, in turn.
   static std::string nameOf( const std::string &bus ) {
      const unsigned number = adapter( bus );
      const std::string device = fmt::format( "/sys/bus/i2c/devices/i2c-{}", number );
      if ( bus == "i2c:0" )
         return fmt::format( R"({{ "name": "{}" }})", readFile( device + "/name" ) );
      if ( bus == "celestica:1:1" )
         return fmt::format( R"({{ "path": "{}" }})", device );
      return fmt::format( R"({{ "number": {} }})", number );
   }
   // The output of orbis-smbus.
   static std::string smbus( const std::string &socket, std::vector<std::string> words,
                             int exitCode = 0 ) {
      words.insert( words.begin(), { ORBIS_SMBUS, "--socket", socket } );
      return run( words, exitCode );
   }
   static void sim( std::vector<std::string> words ) {
      words.insert( words.begin(), "sim" );
      smbus( exporter(), words );
   }
   // The quantities of the simulation, by "chip quantity".
   static std::map<std::string, double> quantities() {
      rapidjson::Document document;
      document.Parse( smbus( exporter(), { "--json", "sim", "list" } ).c_str() );
      std::map<std::string, double> all;
      for ( const auto &chip : document["chips"].GetArray() )
         for ( const auto &quantity : chip["quantities"].GetArray() ) {
            const std::string name = quantity["name"].GetString();
            const bool whole =
               name.find( ' ' ) != name.npos; // a quantity of a part has the part's name
            all[whole ? name : chip["name"].GetString() + ( " " + name )] =
               quantity["value"].GetDouble();
         }
      return all;
   }

   static std::unique_ptr<TestSupport::PrivateFolder> folder;
   static std::unique_ptr<StartedProgram> exporting, driving;
   static std::vector<std::string> found; // by the kernel's lm75
};

std::unique_ptr<TestSupport::PrivateFolder> ExportedAdapterTest::folder;
std::unique_ptr<StartedProgram> ExportedAdapterTest::exporting, ExportedAdapterTest::driving;
std::vector<std::string> ExportedAdapterTest::found;

TEST_F( ExportedAdapterTest, TheKernelFindsOurThermometersByItself ) {
   EXPECT_THAT( found,
                ::testing::UnorderedElementsAre( fmt::format( "{}-004a", adapter( "scd(4):1:3" ) ),
                                                 fmt::format( "{}-0048", adapter( "i2c:0" ) ) ) );
}

// The clock is stopped, so nothing changes between the two. Another test replays this recording
// without the kernel.
TEST_F( ExportedAdapterTest, TheBoardShowsTheSameThroughTheKernelAsDirectly ) {
   stop( driving ); // adapters have one server
   const std::string socket = folder->file( "recorded.sock" );
   auto recorded = startServer( socket, { "--record", OUT "/kelt-through-linux.rec" } );
   const Shown direct = showBoard( BOARDS "/kelt", exporter() );
   const Shown throughLinux = showBoard( BOARDS "/kelt", socket );
   EXPECT_EQ( throughLinux.exitCode, 0 );
   EXPECT_EQ( throughLinux.values, direct.values );
   EXPECT_EQ( throughLinux.texts, direct.texts );
   EXPECT_EQ( throughLinux.faults, direct.faults );
   EXPECT_GT( direct.values.size(), 50u );
   // It identifies itself in PMBus blocks.
   EXPECT_THAT( throughLinux.texts.at( "psu1-slot" ), HasSubstr( "P2306A0017" ) );
   smbus( socket, { "read", "scd(4):1:2:0x55", "0", "--via", "0x70=1" }, 1 );
   stop( recorded );
   driving = startServer( linux(), {} );
}

TEST_F( ExportedAdapterTest, TheKernelsLm75ReadsOurThermometersBehindOurMux ) {
   smbus( exporter(), { "write", "scd(4):1:2:0x70", "1" } );
   Agreement table( "our LM75 behind our PCA9548" );
   {
      const KernelDriver lm75( adapter( "scd(4):1:2" ), "lm75", 0x48 );
      for ( double celsius = -55; celsius <= 125; celsius += 12.5 ) {
         sim( { "set", "temp-front", "temperature", fmt::format( "{}", celsius ) } );
         table.compare<double>( fmt::format( "{} C", celsius ), celsius * 1000,
                                static_cast<double>( lm75.hwmon( "temp1_input" ) ) );
      }
      sim( { "set", "temp-front", "temperature", "24.5" } );
      smbus( exporter(), { "write", "scd(4):1:2:0x70", "2" } );
      table.compare<double>( "the rear one", 31000,
                             static_cast<double>( lm75.hwmon( "temp1_input" ) ) );
      EXPECT_THAT( smbus( linux(), { "read", "scd(4):1:2:0x48", "0", "--via", "0x70=2" }, 1 ),
                   HasSubstr( "the address is held by the kernel driver lm75" ) );
   }
   smbus( exporter(), { "write", "scd(4):1:2:0x70", "0" } );
}

TEST_F( ExportedAdapterTest, TheKernelsPmbusDriverReadsOurSuppliesModel ) {
   const KernelDriver pmbus( adapter( "scd(4):1:4" ), "dps460", 0x58 );
   const struct {
      const char *kernels, *ours;
      double units, resolution; // resolution: of the number format
   } rows[] = {
      { "vin", "line", 1e3, 0.5 },
      { "iin", "inputCurrent", 1e3, 0.002 },
      { "vout1", "outputVoltage", 1e3, 0.002 },
      { "iout1", "outputCurrent", 1e3, 0.05 },
      { "pout1", "outputPower", 1e6, 0.5 },
      { "pin", "inputPower", 1e6, 0.5 },
   };
   for ( const double load : { 5., 21.5, 40. } ) {
      sim( { "set", "psu1", "load", fmt::format( "{}", load ) } );
      sim( { "step", "600" } );
      const auto model = quantities();
      for ( const auto &row : rows )
         EXPECT_THAT( static_cast<double>( pmbus.labelled( row.kernels ) ) / row.units,
                      DoubleNear( model.at( std::string( "psu1 " ) + row.ours ), row.resolution ) )
            << row.kernels << " at " << load << " A";
      EXPECT_THAT( static_cast<double>( pmbus.hwmon( "temp1_input" ) ) / 1e3,
                   DoubleNear( model.at( "psu1 inlet" ), 0.1 ) );
      EXPECT_THAT( static_cast<double>( pmbus.hwmon( "temp2_input" ) ) / 1e3,
                   DoubleNear( model.at( "psu1 hotSpot" ), 0.1 ) );
      EXPECT_THAT( static_cast<double>( pmbus.hwmon( "fan1_input" ) ),
                   DoubleNear( model.at( "psu1.fan1 rpm" ), 16 ) );
      EXPECT_THAT( static_cast<double>( pmbus.hwmon( "fan2_input" ) ),
                   DoubleNear( model.at( "psu1.fan2 rpm" ), 16 ) );
   }
}

// The sixteen columns of a table of bytes or addresses, row by row.
std::vector<std::string> cells( const std::string &table ) {
   std::vector<std::string> all;
   std::istringstream lines( table );
   for ( std::string line; std::getline( lines, line ); ) {
      const size_t colon = line.find( ':' );
      std::istringstream row( colon == line.npos ? "" : line.substr( colon + 1 ) );
      std::string cell;
      for ( int column = 0; column < 16 && row >> cell; ++column )
         all.push_back( cell );
   }
   return all;
}

TEST_F( ExportedAdapterTest, TheKernelsAt24ReadsOurMemory ) {
   const KernelDriver at24( adapter( "scd(4):1:4" ), "24c02", 0x50 );
   const std::string kernels = at24.file( "eeprom" );
   const auto ours = cells( smbus( exporter(), { "dump", "scd(4):1:4:0x50" } ) );
   ASSERT_EQ( ours.size(), 256u );
   Agreement table( "our 24C02, bytes" );
   for ( size_t i = 0; i < ours.size(); ++i )
      table.compare<unsigned>( fmt::format( "byte {:#04x}", i ),
                               static_cast<unsigned>( std::stoul( ours[i], nullptr, 16 ) ),
                               static_cast<uint8_t>( kernels.at( i ) ) );
}

TEST_F( ExportedAdapterTest, I2cToolsSeeWhatOurClientSees ) {
   for ( const std::string bus : { "scd(4):1:4", "scd(4):1:5" } ) {
      const std::string number = std::to_string( adapter( bus ) );
      const auto detected = cells( run( { "/usr/sbin/i2cdetect", "-y", "-r", number } ) );
      EXPECT_EQ( cells( smbus( exporter(), { "scan", bus } ) ), detected ) << bus;
      EXPECT_EQ( cells( smbus( linux(), { "scan", bus } ) ), detected ) << bus;
      EXPECT_GT( std::count_if( detected.begin(), detected.end(),
                                []( const std::string &cell ) { return cell != "--"; } ),
                 0 );
   }
   const std::string board = std::to_string( adapter( "scd(4):1:3" ) );
   for ( const char *reg : { "0", "2", "3" } ) {
      const std::string got = run( { "/usr/sbin/i2cget", "-y", board, "0x4a", reg, "w" } );
      for ( const std::string &socket : { exporter(), linux() } )
         EXPECT_EQ( smbus( socket, { "read", "scd(4):1:3:0x4a", reg, "--size", "word" } ), got );
   }
   const std::string supplies = std::to_string( adapter( "scd(4):1:4" ) );
   for ( const char *address : { "0x50", "0x58" } ) {
      const auto dumped = cells( run( { "/usr/sbin/i2cdump", "-y", supplies, address, "b" } ) );
      for ( const std::string &socket : { exporter(), linux() } ) {
         auto ours = cells( smbus( socket, { "dump", std::string( "scd(4):1:4:" ) + address } ) );
         EXPECT_EQ( ours, dumped ) << address;
      }
   }
}

TEST_F( ExportedAdapterTest, MuxesAreClosedAfterEveryBatch ) {
   const auto closed = [] { return smbus( exporter(), { "read", "scd(4):1:2:0x70" } ); };
   EXPECT_EQ(
      smbus( linux(), { "read", "scd(4):1:2:0x48", "0", "--size", "2", "--via", "0x70=1" } ),
      "0x18 0x80\n" );
   EXPECT_EQ( closed(), "0x00\n" );
   EXPECT_EQ(
      smbus( linux(), { "read", "scd(4):1:2:0x49", "0", "--via", "0x70=4", "--via", "0x71=128" } ),
      "0x3a\n" );
   EXPECT_EQ( closed(), "0x00\n" );
   EXPECT_THAT( smbus( linux(), { "read", "scd(4):1:2:0x55", "0", "--via", "0x70=1" }, 1 ),
                HasSubstr( "request 2 of 3: read of 1 byte from 0x55 register 0x00 on scd(4):1:2: "
                           "no acknowledge of the address" ) );
   EXPECT_EQ( closed(), "0x00\n" );
}

TEST_F( ExportedAdapterTest, MuxesAreClosedWhenTheClientDisconnects ) {
   sim( { "slow", "temp-front", "1000" } );
   {
      StartedProgram client(
         { ORBIS_SMBUS, "--socket", linux(), "read", "scd(4):1:2:0x48", "0", "--via", "0x70=1" } );
      // A scan's receive byte shows the mux's channels without changing them.
      while ( smbus( exporter(), { "read", "scd(4):1:2:0x70" } ) != "0x01\n" ) {
      }
      client.signal( SIGKILL );
   }
   const auto end = std::chrono::steady_clock::now() + std::chrono::seconds( 10 );
   while ( smbus( exporter(), { "read", "scd(4):1:2:0x70" } ) != "0x00\n" )
      ASSERT_LT( std::chrono::steady_clock::now(), end );
   sim( { "clear", "temp-front" } );
}

TEST_F( ExportedAdapterTest, EveryProtocolReachesTheChips ) {
   const auto same = [&]( const std::vector<std::string> &words ) {
      const std::string direct = smbus( exporter(), words );
      EXPECT_EQ( smbus( linux(), words ), direct ) << fmt::format( "{}", fmt::join( words, " " ) );
      return direct;
   };
   EXPECT_THAT( same( { "read", "scd(4):1:4:0x50", "0", "--size", "64" } ), HasSubstr( "0x" ) );
   same( { "read", "scd(4):1:4:0x58", "0x79", "--size", "word", "--pec" } );
   same( { "read", "scd(4):1:4:0x58", "0x20", "--pec" } );
   EXPECT_EQ( same( { "read", "celestica:1:1:0x31", "0x100" } ), "0x17\n" );
   EXPECT_THAT( smbus( linux(), { "read", "scd(4):1:4:0x58", "0x9a", "--size", "block" }, 1 ),
                HasSubstr( "the adapter lacks I2C_FUNC_SMBUS_READ_BLOCK_DATA" ) );
   // FAN_COMMAND_1 at 64 %, with the packet error code that the kernel adds.
   smbus( linux(), { "write", "scd(4):1:4:0x58", "0x3b", "64", "--size", "word", "--pec" } );
   EXPECT_EQ( quantities().at( "psu1.fan1 drive" ), 64 );
   EXPECT_EQ( smbus( linux(), { "read", "scd(4):1:4:0x58", "0x3b", "--size", "word" } ),
              "0x0040\n" );
}

} // namespace

} // namespace RealTest
