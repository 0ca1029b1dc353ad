// Chips of the kernel's i2c-stub, read by the plug-in through socket, server and i2c-dev on one
// side, and by the kernel's own drivers through hwmon and nvmem on the other.
#include "Agreement.h"
#include "Linux.h"
#include "Plugin.h"
#include "PrivateFolder.h"
#include "StartedProgram.h"
#include "simulator/chips/FruImage.h"

#include <cmath>
#include <csignal>
#include <cstdlib>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>

namespace RealTest {

namespace {

using ::testing::HasSubstr;
using TestSupport::StartedProgram;

// The plug-in reads it only once.
constexpr const char *topology = R"([ { "type": "SCD", "ham": "OrbisSmbus", "pci": 4,
   "accelerators": [ { "id": 1, "busses": [ { "id": 2, "devices": [
      { "did": 1, "address": { "address": 72 } },
      { "did": 2, "address": { "address": 88 } },
      { "did": 3, "address": { "address": 80 } },
      { "did": 4, "address": { "address": 80 } } ] } ] } ] } ])";

class StubTest : public ::testing::Test {
 protected:
   static void SetUpTestSuite() {
      loadModule( "i2c-stub", { "chip_addr=0x48,0x49,0x50,0x58" } );
      adapter = adapterNamed( "SMBus stub" );
      folder = std::make_unique<TestSupport::PrivateFolder>();
      setenv( "ORBIS_SMBUS_SOCKET", folder->file( "smbus.sock" ).c_str(), 1 );
      // All but 0x49 are also read by the kernel's drivers.
      const std::string routes = folder->write( "routes.json", R"({ "routes": [
         { "bus": "scd(4):1:2", "adapter": { "name": "SMBus stub driver" }, "chips": [
            { "address": 72, "force": true }, { "address": 88, "force": true },
            { "address": 80, "force": true } ] },
         { "bus": "ioport:0", "ports": { "base": 760, "size": 8 } } ] })" );
      EXPECT_THAT( run( { ORBIS_SMBUSD, "check-routes", routes } ),
                   HasSubstr( fmt::format( "/dev/i2c-{} (SMBus stub driver)", adapter ) ) );
      server = std::make_unique<StartedProgram>(
         std::vector<std::string>{ ORBIS_SMBUSD, "--routes", routes } );
      ASSERT_TRUE( server->waitForError( "serving" ) );
      ASSERT_EQ( plugin<decltype( pl_temp_sensor_init )>( "pl_temp_sensor_init" )( topology ), 0 );
   }
   static void TearDownTestSuite() {
      server->signal( SIGTERM );
      EXPECT_EQ( server->wait(), 0 ) << server->errors();
      server.reset();
      folder.reset();
   }
   static std::string document( unsigned did, const char *driver, unsigned address,
                                const std::string &arguments ) {
      return fmt::format( R"({{ "did": {}, "driver": "{}", "address": {{ "address": {} }},
                                "driverArgs": {{ {} }} }})",
                          did, driver, address, arguments );
   }
   // The plug-in's object keeps a pointer to the text.
   static const char *kept( const std::string &text ) {
      static std::vector<std::unique_ptr<std::string>> texts;
      return texts.emplace_back( std::make_unique<std::string>( text ) )->c_str();
   }

   static unsigned adapter;
   static std::unique_ptr<TestSupport::PrivateFolder> folder;
   static std::unique_ptr<StartedProgram> server;
};

unsigned StubTest::adapter = 0;
std::unique_ptr<TestSupport::PrivateFolder> StubTest::folder;
std::unique_ptr<StartedProgram> StubTest::server;

// All 512 temperatures of the chip's nine bits.
TEST_F( StubTest, TheKernelsLm75ReadsTheSameTemperatures ) {
   StubChip chip( adapter, 0x48 );
   const KernelDriver lm75( adapter, "lm75", 0x48 );
   pl_temp_sensor *ours = plugin<decltype( pl_temp_sensor_add )>( "pl_temp_sensor_add" )(
      kept( document( 1, "LM75", 72, "" ) ), 60, 70 );
   ASSERT_TRUE( ours );
   Agreement table( "LM75 temperature" );
   for ( int halves = -256; halves < 256; ++halves ) {
      const auto word = static_cast<uint16_t>( halves << 7 );
      chip.wordIs( 0, static_cast<uint16_t>( word >> 8 | word << 8 ) ); // degrees first
      float degrees = NAN;
      ASSERT_EQ( ours->ops->get_temperature( ours, &degrees ), PL_STATUS_OK );
      const bool negativeHalf = halves < 0 && halves % 2 != 0;
      table.compare<double>( fmt::format( "{:#06x}", word ), degrees * 1000.,
                             static_cast<double>( lm75.hwmon( "temp1_input" ) ),
                             negativeHalf ? "below zero the half degree is taken away" : "",
                             halves * 500. - 1000. );
   }
   EXPECT_GE( table.words(), 200u );
}

// One thread takes a transaction from the socket to the adapter and back.
TEST_F( StubTest, TheServerWaitsOnceForAReading ) {
   StubChip( adapter, 0x48 ).wordIs( 0, 0x8018 );
   pl_temp_sensor *ours = plugin<decltype( pl_temp_sensor_add )>( "pl_temp_sensor_add" )(
      kept( document( 1, "LM75", 72, "" ) ), 60, 70 );
   ASSERT_TRUE( ours );
   float degrees = NAN;
   ASSERT_EQ( ours->ops->get_temperature( ours, &degrees ), PL_STATUS_OK ); // connects
   const unsigned long before = waitsOf( server->pid() );
   for ( int i = 0; i < 1000; ++i )
      ASSERT_EQ( ours->ops->get_temperature( ours, &degrees ), PL_STATUS_OK );
   EXPECT_EQ( degrees, 24.5f );
   EXPECT_LT( waitsOf( server->pid() ) - before, 1500u ); // two each would be 2000
}

// The kernel rounds down to its unit: a thousandth or a millionth.
double inUnits( float value, double units ) { return std::floor( value * units ); }

TEST_F( StubTest, TheKernelsPmbusDriverReadsTheSameSupply ) {
   StubChip chip( adapter, 0x58 );
   chip.byteIs( 0x20, 0x17 );                           // VOUT_MODE: linear, exponent -9
   chip.byteIs( 0x3A, 0x88 );                           // FAN_CONFIG_1_2: both fans
   const KernelDriver pmbus( adapter, "dps460", 0x58 ); // a generic driver for one page
   const auto device = [&]( const std::string &arguments ) {
      return kept( document( 2, "Pmbus", 88, arguments ) );
   };
   pl_psu *psu = plugin<decltype( pl_psu_add )>( "pl_psu_add" )( device( "" ) );
   ASSERT_TRUE( psu );
   const pl_psu_ops *ops = psu->ops;
   const struct {
      uint8_t command;
      const char *label;
      pl_status ( *read )( pl_psu *, float * );
      double units; // kernel's units in one of ours
   } rows[] = {
      { 0x88, "vin", ops->get_input_voltage, 1e3 },
      { 0x89, "iin", ops->get_input_current, 1e3 },
      { 0x8B, "vout1", ops->get_output_voltage, 1e3 },
      { 0x8C, "iout1", ops->get_output_current, 1e3 },
      { 0x96, "pout1", ops->get_output_power, 1e6 },
      { 0x97, "pin", ops->get_input_power, 1e6 },
   };
   Agreement table( "PMBus voltage, current, power" );
   for ( const auto &row : rows ) {
      for ( unsigned i = 0; i < 64; ++i ) {
         const auto word = static_cast<uint16_t>( 0x0401 * ( i + 1 ) * ( i + 3 ) );
         chip.wordIs( row.command, word );
         float value = NAN;
         ASSERT_EQ( row.read( psu, &value ), PL_STATUS_OK );
         const bool wrapped = row.command == 0x8B && word >= 0x8000;
         table.compare<double>( fmt::format( "{} {:#06x}", row.label, word ),
                                inUnits( value, row.units ),
                                static_cast<double>( pmbus.labelled( row.label ) ),
                                wrapped ? "output voltages from 0x8000 on count as negative" : "",
                                std::floor( ( word - 0x10000 ) * 1000. / 512 ) );
      }
   }
   EXPECT_GE( table.words(), 200u );
}

TEST_F( StubTest, TheKernelsPmbusDriverReadsTheSameFansAndTemperatures ) {
   StubChip chip( adapter, 0x58 );
   chip.byteIs( 0x20, 0x17 );
   chip.byteIs( 0x3A, 0x88 );
   const KernelDriver pmbus( adapter, "dps460", 0x58 );
   Agreement table( "PMBus temperature, fan speed" );
   for ( unsigned id = 1; id <= 2; ++id ) {
      pl_temp_sensor *sensor = plugin<decltype( pl_temp_sensor_add )>( "pl_temp_sensor_add" )(
         kept( document( 2, "Pmbus", 88, fmt::format( R"("sensorId": "{}")", id ) ) ), 60, 70 );
      pl_fan *fan = plugin<decltype( pl_fan_add )>( "pl_fan_add" )( kept( document(
         2, "Pmbus", 88, fmt::format( R"("fanId": "{}", "maxFanRpm": "20000")", id ) ) ) );
      ASSERT_TRUE( sensor && fan );
      for ( unsigned i = 0; i < 64; ++i ) {
         const auto word = static_cast<uint16_t>( 0x0401 * ( i + 2 ) * ( i + 3 ) + id );
         const int mantissa = ( word & 0x3FF ) - ( word & 0x400 );
         const int exponent = ( word >> 11 & 0xF ) - ( word >> 11 & 0x10 );
         const double exact = mantissa * std::exp2( exponent );

         chip.wordIs( static_cast<uint8_t>( 0x8C + id ), word );
         float degrees = NAN;
         ASSERT_EQ( sensor->ops->get_temperature( sensor, &degrees ), PL_STATUS_OK );
         table.compare<double>(
            fmt::format( "temperature {} {:#06x}", id, word ), inUnits( degrees, 1e3 ),
            static_cast<double>( pmbus.hwmon( fmt::format( "temp{}_input", id ) ) ),
            exact < 0 ? "temperatures below zero are read as zero" : "", 0. );

         chip.wordIs( static_cast<uint8_t>( 0x8F + id ), word );
         int rpm = -1;
         ASSERT_EQ( fan->ops->get_rpm( fan, &rpm ), PL_STATUS_OK );
         const bool roundsUp = exact < 0 && exact != std::trunc( exact );
         table.compare<double>(
            fmt::format( "fan {} {:#06x}", id, word ), rpm,
            static_cast<double>( pmbus.hwmon( fmt::format( "fan{}_input", id ) ) ),
            roundsUp ? "parts of a turn are cut off, below zero too" : "", std::trunc( exact ) );
      }
   }
   EXPECT_GE( table.words(), 200u );
}

TEST_F( StubTest, TheKernelsAt24ReadsTheSameMemory ) {
   const Simulator::EepromImage image =
      Simulator::fruImage( { "Kelt Power", "KP-850AC-F", "740-2306", "03", "P2306A0017", "" } );
   StubChip chip( adapter, 0x50 );
   for ( unsigned i = 0; i < image.size(); ++i )
      chip.byteIs( static_cast<uint8_t>( i ), image[i] );
   const KernelDriver at24( adapter, "24c02", 0x50 );
   const std::string kernels = at24.file( "eeprom" );
   pl_smbus *ours = plugin<decltype( pl_smbus_add )>( "pl_smbus_add" )(
      kept( document( 3, "SmbusProxyDriver", 80, "" ) ), 80 );
   ASSERT_TRUE( ours );
   Agreement table( "24C02 bytes, one by one" ), blocks( "24C02 bytes, in blocks of 32" );
   for ( unsigned i = 0; i < image.size(); ++i ) {
      uint8_t byte = 0;
      ASSERT_EQ( ours->ops->read_byte( ours, static_cast<uint8_t>( i ), &byte ), PL_STATUS_OK );
      table.compare<unsigned>( fmt::format( "byte {:#04x}", i ), byte,
                               static_cast<uint8_t>( kernels.at( i ) ) );
   }
   for ( unsigned i = 0; i < image.size(); i += 32 ) {
      uint8_t block[32] = {};
      ASSERT_EQ( ours->ops->i2c_block_read( ours, static_cast<uint8_t>( i ), block, 32 ),
                 PL_STATUS_OK );
      for ( unsigned k = 0; k < 32; ++k )
         blocks.compare<unsigned>( fmt::format( "byte {:#04x}", i + k ), block[k],
                                   static_cast<uint8_t>( kernels.at( i + k ) ) );
   }
   pl_slot *slot = plugin<decltype( pl_slot_add )>( "pl_slot_add" )( kept( document(
      4, "PsuSlot", 80,
      R"("psuId": "1", "identificationType": "ipmi", "model_1": "KP-850AC-F", "psuFdl_1": "S {serialNum}")" ) ) );
   ASSERT_TRUE( slot );
   char *description = nullptr;
   ASSERT_EQ( slot->ops->get_presence( slot, &description ), PL_STATUS_OK );
   EXPECT_THAT( description, HasSubstr( "P2306A0017" ) );
   std::free( description );
}

TEST_F( StubTest, AnAddressIsRefusedWhileAKernelDriverHoldsIt ) {
   const std::vector<std::string> read{ ORBIS_SMBUS, "read", "scd(4):1:2:0x49", "0" };
   StubChip( adapter, 0x49 ).byteIs( 0, 0x21 );
   EXPECT_EQ( run( read ), "0x21\n" );
   {
      const KernelDriver lm75( adapter, "lm75", 0x49 );
      EXPECT_THAT( run( read, 1 ), HasSubstr( "the address is held by the kernel driver lm75" ) );
   }
   EXPECT_EQ( run( read ), "0x21\n" );
}

TEST_F( StubTest, AMissingFunctionOfTheAdapterIsNamed ) {
   EXPECT_THAT( run( { ORBIS_SMBUS, "read", "scd(4):1:2:0x49", "0", "--size", "33" }, 1 ),
                HasSubstr( "the adapter lacks I2C_FUNC_I2C" ) );
   EXPECT_THAT( run( { ORBIS_SMBUS, "read", "scd(4):1:2:0x49", "0", "--pec" }, 1 ),
                HasSubstr( "the adapter lacks I2C_FUNC_SMBUS_PEC" ) );
   EXPECT_THAT( run( { ORBIS_SMBUS, "read", "scd(4):1:2:0x22", "0" }, 1 ),
                HasSubstr( "no acknowledge of the address" ) );
}

// The scratch register of the second serial port stores what is written, without side effects.
TEST_F( StubTest, IoPortsReachTheProcessorsPorts ) {
   for ( const char *value : { "0x5a", "0xa5" } ) {
      run( { ORBIS_SMBUS, "write", "ioport:0:0", "7", value } );
      EXPECT_EQ( run( { ORBIS_SMBUS, "read", "ioport:0:0", "7" } ), fmt::format( "{}\n", value ) );
   }
   EXPECT_THAT( run( { ORBIS_SMBUS, "read", "ioport:0:0", "8" }, 1 ),
                HasSubstr( "outside the range of 8 ports from 0x02f8" ) );
}

} // namespace

} // namespace RealTest
