// Transceiver modules in the cages of the simulated Kelt board: their lines, their second address,
// and the fibres between them.
#include "ManualClock.h"
#include "ModulePins.h"
#include "simulator/board/SimulatedBoard.h"
#include "simulator/chips/modules/ModuleChip.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace SimulatorTest {

namespace {

using namespace TestSupport;
using namespace Bus;
using namespace Simulator;
using namespace std::chrono_literals;
using Kind = Transfer::Kind;

class ModulesOnBoardTest : public ::testing::Test {
 protected:
   Outcome read( const char *bus, uint8_t address, uint32_t offset, unsigned length ) {
      return busses.at( *parseRootBusId( bus ) )
         ->transfer(
            { .kind = Kind::Read, .address = address, .offset = offset, .length = length } );
   }
   void write( const char *bus, uint8_t address, uint32_t offset, const std::string &data ) {
      busses.at( *parseRootBusId( bus ) )
         ->transfer( { .kind = Kind::Write,
                       .address = address,
                       .offset = offset,
                       .length = static_cast<unsigned>( data.size() ),
                       .data = data } );
   }
   int cpld( uint8_t address, uint32_t offset ) {
      return static_cast<uint8_t>( read( "celestica:1:1", address, offset, 1 ).data.at( 0 ) );
   }
   Chip &module( const std::string &cage ) { return bench.chip( cage + "-eeprom" ); }
   double get( const std::string &part, const char *name ) {
      return bench.quantity( part, name ).get();
   }

   static constexpr uint8_t qsfpCpld = 0x32, sfpCpld = 0x33;
   ManualClock clock;
   SimulatedBoard board{ KELT_BOARD "/topology.json", KELT_BOARD "/simulation.json", clock };
   Busses busses = board.busses();
   Bench &bench = board.bench();
};

TEST_F( ModulesOnBoardTest, AnSfpAnswersAtBothOfItsAddresses ) {
   write( "scd(4):2:1", 0x70, 1, "" );
   EXPECT_EQ( read( "scd(4):2:1", 0x50, 0, 1 ).data, "\x03" );
   EXPECT_EQ( read( "scd(4):2:1", 0x51, 0, 1 ).data, "K" ); // 75 degrees
   bench.pull( "sfp1" );
   EXPECT_EQ( read( "scd(4):2:1", 0x50, 0, 1 ).error, noAddressAcknowledge );
   EXPECT_EQ( read( "scd(4):2:1", 0x51, 0, 1 ).error, noAddressAcknowledge );
}

TEST_F( ModulesOnBoardTest, AllModulesShineAndNoneHasAFlag ) {
   unsigned lit = 0;
   for ( int minute = 0; minute < 60; ++minute ) {
      for ( const auto &[chip, kind, segment, address] : bench.chips() ) {
         auto *each = dynamic_cast<ModuleChip *>( chip.get() );
         if ( !each || !each->present() )
            continue;
         EXPECT_FALSE( each->signals().interrupt ) << each->name();
         EXPECT_FALSE( each->signals().rxLos ) << each->name();
         if ( kind == "SfpModule" && answers( *each, 0x51 ) ) {
            EXPECT_EQ( readFrom( *each, 110, 8, 0x51 ), ( Bytes{ 0, 0, 0, 0, 0, 0, 0, 0 } ) )
               << each->name();
         }
         lit += each->light( 0 ) > 0.3;
      }
      clock.advance( 63s );
   }
   EXPECT_GE( lit, 55u * 60 );
}

TEST_F( ModulesOnBoardTest, TheCpldShowsAModulesInterrupt ) {
   EXPECT_EQ( cpld( qsfpCpld, 0x256 ), 0xFF );
   bench.quantityIs( "qsfp4-eeprom", "supply", 3.7 );
   EXPECT_EQ( cpld( qsfpCpld, 0x256 ), 0xF7 );
   EXPECT_EQ( get( "qsfp4", "interrupt" ), 1 );
   bench.quantityIs( "qsfp4-eeprom", "supply", 3.3 );
   EXPECT_EQ( cpld( qsfpCpld, 0x256 ), 0xF7 );
   EXPECT_EQ( byteOf( module( "qsfp4" ), 7 ), 0xA0 );
   EXPECT_EQ( cpld( qsfpCpld, 0x256 ), 0xFF );
}

TEST_F( ModulesOnBoardTest, AnInsertedQsfpInterruptsUntilItsHostHasSeenIt ) {
   bench.pull( "qsfp4" );
   EXPECT_EQ( cpld( qsfpCpld, 0x254 ), 0x33 );
   EXPECT_EQ( cpld( qsfpCpld, 0x256 ), 0xFF );
   bench.insert( "qsfp4" );
   EXPECT_EQ( cpld( qsfpCpld, 0x254 ), 0x3B );
   EXPECT_EQ( cpld( qsfpCpld, 0x256 ), 0xFF );
   clock.advance( 2s );
   EXPECT_EQ( cpld( qsfpCpld, 0x256 ), 0xF7 );
   EXPECT_EQ( byteOf( module( "qsfp4" ), 2 ), 0x00 );
   EXPECT_EQ( cpld( qsfpCpld, 0x256 ), 0xFF );
}

TEST_F( ModulesOnBoardTest, TheCpldResetsAModule ) {
   write( "celestica:1:1", qsfpCpld, 0x250, "\xF7" );
   EXPECT_FALSE( answers( module( "qsfp4" ) ) );
   EXPECT_TRUE( answers( module( "qsfp5" ) ) );
   write( "celestica:1:1", qsfpCpld, 0x250, "\xFF" );
   clock.advance( 2s );
   EXPECT_TRUE( answers( module( "qsfp4" ) ) );
}

TEST_F( ModulesOnBoardTest, TheCpldPutsAModuleInLowPower ) {
   write( "celestica:1:1", qsfpCpld, 0x252, "\x08" );
   clock.advance( 100ms );
   EXPECT_EQ( get( "qsfp4-eeprom.lane1", "txPower" ), 0 );
   EXPECT_GT( get( "qsfp1-eeprom.lane1", "txPower" ), 0 );
   bench.powerCycle(); // and its registers are those after power-on
   clock.advance( 2s );
   EXPECT_GT( get( "qsfp4-eeprom.lane1", "txPower" ), 0 );
}

TEST_F( ModulesOnBoardTest, TheCpldTurnsALaserOffAndShowsTheLossAtTheOtherEnd ) {
   EXPECT_EQ( cpld( sfpCpld, 0x240 ) & 0x05, 0x00 );
   write( "celestica:1:1", sfpCpld, 0x250, "\x01" ); // of sfp1; the fibre goes to sfp3
   clock.advance( 1ms );
   EXPECT_EQ( get( "sfp1-eeprom.lane1", "txPower" ), 0 );
   EXPECT_EQ( cpld( sfpCpld, 0x240 ) & 0x05, 0x04 );
   EXPECT_EQ( get( "sfp3", "rxLos" ), 1 );
}

TEST_F( ModulesOnBoardTest, TheCpldShowsADeadLaser ) {
   EXPECT_EQ( cpld( sfpCpld, 0x256 ) & 0x01, 0x00 );
   bench.quantityIs( "sfp1-eeprom.lane1", "age", 100 );
   EXPECT_EQ( cpld( sfpCpld, 0x256 ) & 0x01, 0x01 );
}

TEST_F( ModulesOnBoardTest, AFibreCarriesLightFromLaneToLaneBothWays ) {
   for ( const char *lane : { "lane1", "lane2", "lane3", "lane4" } ) {
      const auto power = [&]( const char *cage, const char *name ) {
         return get( std::string( cage ) + "-eeprom." + lane, name );
      };
      EXPECT_NEAR( power( "qsfp6", "rxPower" ), power( "qsfp5", "txPower" ) * 0.56234, 1e-4 );
      EXPECT_NEAR( power( "qsfp5", "rxPower" ), power( "qsfp6", "txPower" ) * 0.56234, 1e-4 );
   }
   bench.quantityIs( "qsfp5-eeprom.lane2", "age", 90 );
   EXPECT_LT( get( "qsfp6-eeprom.lane2", "rxPower" ), 0.2 );
   EXPECT_GT( get( "qsfp6-eeprom.lane3", "rxPower" ), 0.6 );
}

TEST_F( ModulesOnBoardTest, AModuleIsDarkWhenTheOtherEndOfItsFibreIsPulled ) {
   bench.pull( "qsfp5" );
   EXPECT_EQ( get( "qsfp6-eeprom.lane1", "rxPower" ), 0 );
   EXPECT_EQ( byteOf( module( "qsfp6" ), 3 ), 0x0F );
   bench.insert( "qsfp5" );
   clock.advance( 2s );
   EXPECT_EQ( byteOf( module( "qsfp6" ), 3 ), 0x0F ); // it was dark since the last time
   EXPECT_EQ( byteOf( module( "qsfp6" ), 3 ), 0x00 );
}

TEST_F( ModulesOnBoardTest, AFibresLightCannotBeSetAtItsEnd ) {
   EXPECT_THROW( bench.quantityIs( "qsfp6-eeprom.lane1", "rxPower", 0 ), BenchError );
   bench.quantityIs( "qsfp6-eeprom.lane1", "attenuation", 40 );
   EXPECT_LT( get( "qsfp6-eeprom.lane1", "rxPower" ), 0.001 );
}

} // namespace

} // namespace SimulatorTest
