// The whole simulated Kelt board: its controls and its busses.
#include "BusPins.h"
#include "ManualClock.h"
#include "simulator/board/SimulatedBoard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <set>

namespace SimulatorTest {

namespace {

using namespace TestSupport;
using namespace Bus;
using namespace Simulator;
using namespace std::chrono_literals;
using Kind = Transfer::Kind;

class BenchTest : public ::testing::Test {
 protected:
   Outcome read( const char *bus, uint8_t address, uint32_t offset, unsigned length ) {
      return busses.at( *parseRootBusId( bus ) )
         ->transfer(
            { .kind = Kind::Read, .address = address, .offset = offset, .length = length } );
   }
   Outcome write( const char *bus, uint8_t address, uint32_t offset, const std::string &data ) {
      return busses.at( *parseRootBusId( bus ) )
         ->transfer( { .kind = Kind::Write,
                       .address = address,
                       .offset = offset,
                       .length = static_cast<unsigned>( data.size() ),
                       .data = data } );
   }
   std::string complaint( const std::function<void()> &action ) {
      try {
         action();
         return "none";
      } catch ( const BenchError &error ) {
         return error.what();
      }
   }

   static constexpr const char *psus = "scd(4):1:4";
   static constexpr const char *fans = "scd(4):1:5";
   static constexpr const char *cplds = "celestica:1:1";
   ManualClock clock;
   SimulatedBoard board{ KELT_BOARD "/topology.json", KELT_BOARD "/simulation.json", clock };
   Busses busses = board.busses();
   Bench &bench = board.bench();
};

TEST_F( BenchTest, ShowsOnTheBusWhatTheBenchSets ) {
   bench.quantityIs( "temp-front", "temperature", 25.5 );
   write( "scd(4):1:2", 0x70, 1, "" );
   EXPECT_EQ( read( "scd(4):1:2", 0x48, 0, 2 ).data, "\x19\x80" );
   bench.quantityIs( "psu2", "line", 120 );
   EXPECT_EQ( read( psus, 0x59, 0x88, 2 ).data, "\xC0\xEB" ); // 960 by 2^-3
}

TEST_F( BenchTest, HasDifferentValuesForAllReadings ) {
   std::set<double> seen;
   for ( const auto &[chip, kind, wire, address] : bench.chips() ) {
      for ( const Quantity &each : chip->quantities() ) {
         const bool compared = chip->present() && !each.unit.empty() && each.unit != "%" &&
                               each.name != "load" && !each.name.starts_with( "tOs" ) &&
                               !each.name.starts_with( "tHyst" ) &&
                               !each.name.ends_with( "attenuation" );
         EXPECT_TRUE( !compared || seen.insert( each.get() ).second )
            << chip->name() << " " << each.name << " is " << each.get() << ", as another reading";
      }
   }
   EXPECT_GE( seen.size(), 30u );
}

TEST_F( BenchTest, PullsASupplyWithAllItsChips ) {
   EXPECT_TRUE( read( psus, 0x59, 0x88, 2 ).ok() );
   EXPECT_TRUE( read( psus, 0x51, 0, 1 ).ok() );
   bench.pull( "psu2" );
   EXPECT_EQ( read( psus, 0x59, 0x88, 2 ).error, noAddressAcknowledge );
   EXPECT_EQ( read( psus, 0x51, 0, 1 ).error, noAddressAcknowledge );
   EXPECT_TRUE( read( psus, 0x58, 0x88, 2 ).ok() );
   bench.insert( "psu2" );
   EXPECT_TRUE( read( psus, 0x59, 0x88, 2 ).ok() );
}

TEST_F( BenchTest, PutsASpareSupplyOnlyIntoAnEmptyBay ) {
   EXPECT_EQ( complaint( [&] { bench.insert( "spare1" ); } ),
              "psu1 is already at this address of this bus" );
   EXPECT_EQ( read( psus, 0x58, 0x9A, 11 ).data, "\nKP-850AC-F" );
   bench.pull( "psu1" );
   bench.insert( "spare1" );
   EXPECT_EQ( read( psus, 0x58, 0x9A, 9 ).data, "\x08KP-650AC" );
   EXPECT_EQ( complaint( [&] { bench.insert( "psu1" ); } ),
              "spare1 is already at this address of this bus" );
}

TEST_F( BenchTest, ShowsAFanModuleAtThePinsAndStopsItsRotorsWhenItIsPulled ) {
   EXPECT_EQ( read( fans, 0x20, 0x01, 2 ).data, std::string( "\x83", 1 ) + "\x83" );
   EXPECT_EQ( read( fans, 0x20, 0x81, 2 ).data, "\x83\x7f" );
   bench.pull( "fan3" );
   EXPECT_EQ( read( fans, 0x20, 0x81, 2 ).data, "\x93\x7f" );
   EXPECT_EQ( bench.quantity( "fan3.inlet", "rpm" ).get(), 0 );
   EXPECT_EQ( bench.quantity( "fan3.outlet", "rpm" ).get(), 0 );
   bench.insert( "fan3" );
   clock.advance( 1min );
   EXPECT_NEAR( bench.quantity( "fan3.inlet", "rpm" ).get(), 13286, 1 );
}

TEST_F( BenchTest, ShowsATransceiverAtItsCpldAndOnItsOwnBus ) {
   const auto identifier = [&] {
      write( "scd(4):2:0", 0x70, 1, "" );
      return read( "scd(4):2:0", 0x50, 0, 1 );
   };
   EXPECT_EQ( read( cplds, 0x32, 0x254, 1 ).data, "\x3B" );
   EXPECT_EQ( identifier().data, "\x11" );
   bench.pull( "qsfp1" );
   EXPECT_EQ( read( cplds, 0x32, 0x254, 1 ).data, "\x3A" );
   EXPECT_EQ( identifier().error, noAddressAcknowledge );
}

TEST_F( BenchTest, ResetsEveryChipWhenThePowerCycleBitIsSet ) {
   write( "i2c:0", 0x48, 3, "\x19\x80" );
   write( psus, 0x58, 0x3B, std::string( "\x64\x00", 2 ) );
   EXPECT_TRUE( write( cplds, 0x31, 0x102, "\x01" ).ok() );
   EXPECT_EQ( read( "i2c:0", 0x48, 3, 2 ).data, std::string( "\x50\x00", 2 ) );
   EXPECT_EQ( read( psus, 0x58, 0x3B, 2 ).data, std::string( 2, '\0' ) );
   EXPECT_EQ( read( cplds, 0x31, 0x102, 1 ).data, std::string( 1, '\0' ) );
}

TEST_F( BenchTest, IsSilentFromPowerOffToPowerOn ) {
   write( fans, 0x20, 0x98, "\xFF\xFF\x7F\x1B\x80" );
   write( fans, 0x20, 0x0A, "\x80" );
   EXPECT_TRUE( bench.powered() );
   EXPECT_TRUE( write( fans, 0x20, 0x0B, "\x04" ).ok() );
   EXPECT_FALSE( bench.powered() );
   for ( const auto &[bus, address] : { std::pair( fans, 0x20 ), { psus, 0x58 }, { cplds, 0x31 } } )
      EXPECT_EQ( read( bus, static_cast<uint8_t>( address ), 0, 1 ).error, noAddressAcknowledge );
   bench.powerIs( true );
   EXPECT_EQ( read( fans, 0x20, 0x8A, 2 ).data, std::string( 2, '\0' ) );
}

TEST_F( BenchTest, LetsRotorsAndSuppliesRunDownWithoutPower ) {
   const double before = bench.quantity( "fan1.inlet", "rpm" ).get();
   bench.powerIs( false );
   clock.advance( 800ms );
   EXPECT_NEAR( bench.quantity( "fan1.inlet", "rpm" ).get(), before / std::exp( 1 ), 1 );
   clock.advance( 60s );
   for ( const char *rotor : { "fan1.inlet", "fan5.outlet", "psu1.fan1", "psu2.fan2" } )
      EXPECT_EQ( bench.quantity( rotor, "rpm" ).get(), 0 ) << rotor;
   EXPECT_EQ( bench.quantity( "psu1", "outputVoltage" ).get(), 0 );
   bench.powerIs( true );
   clock.advance( 60s );
   EXPECT_EQ( bench.quantity( "fan1.inlet", "rpm" ).get(), before );
   EXPECT_GT( bench.quantity( "psu1.fan1", "rpm" ).get(), 0 );
   EXPECT_GT( bench.quantity( "psu1", "outputVoltage" ).get(), 11 );
}

TEST_F( BenchTest, CountsTransfersAndBytes ) {
   const auto passed = [&] {
      return std::pair( bench.traffic().transfers, bench.traffic().bytes );
   };
   EXPECT_EQ( passed(), std::pair( uint64_t( 0 ), uint64_t( 0 ) ) );
   read( psus, 0x58, 0x88, 2 ); // address, command, address, two bytes
   EXPECT_EQ( passed(), std::pair( uint64_t( 1 ), uint64_t( 5 ) ) );
   read( psus, 0x11, 0, 2 ); // no chip acknowledges
   EXPECT_EQ( passed(), std::pair( uint64_t( 2 ), uint64_t( 6 ) ) );
}

TEST_F( BenchTest, LeavesAPulledModuleAbsentOverAPowerCycle ) {
   bench.pull( "psu1" );
   bench.powerCycle();
   EXPECT_FALSE( read( psus, 0x58, 0x88, 2 ).ok() );
   EXPECT_EQ( read( cplds, 0x32, 0x254, 1 ).data, "\x3B" );
}

TEST_F( BenchTest, RefusesImpossibleCommandsWithAReason ) {
   EXPECT_EQ( complaint( [&] { bench.pull( "psu3" ); } ),
              "no module is called psu3 (did you mean \"psu1\"?)" );
   EXPECT_EQ( complaint( [&] { bench.insert( "psu1" ); } ), "psu1 is inserted already" );
   EXPECT_EQ( complaint( [&] { bench.pull( "spare1" ); } ), "spare1 is not inserted" );
   EXPECT_EQ( complaint( [&] { bench.chip( "x" ); } ), "no chip is called x" );
   EXPECT_EQ( complaint( [&] { bench.quantity( "x", "rpm" ); } ),
              "nothing with values is called x" );
   EXPECT_EQ( complaint( [&] { bench.quantity( "psu1", "rpm" ); } ),
              "psu1 has no rpm; it has line, load, ambient, failed, inputCurrent, inputPower, "
              "outputVoltage, outputCurrent, outputPower, inlet, hotSpot" );
   EXPECT_EQ( complaint( [&] { bench.quantityIs( "psu1", "inputPower", 1 ); } ),
              "inputPower of psu1 follows from others" );
   EXPECT_EQ( complaint( [&] { bench.quantityIs( "psu1", "line", 301 ); } ),
              "301 is not within 0 to 300 V" );
}

} // namespace

} // namespace SimulatorTest
