// What can be wrong with a transceiver module, as its bus shows it.
#include "ManualClock.h"
#include "ModulePins.h"
#include "simulator/board/Controls.h"
#include "simulator/board/SimulatedBoard.h"

#include <gtest/gtest.h>

namespace SimulatorTest {

namespace {

using namespace std::chrono_literals;
using SmbusControl::Fault;

class ModuleFaultsTest : public ::testing::Test {
 protected:
   // The error, if it is refused.
   std::string fault( const std::string &chip, const std::function<void( Fault & )> &set ) {
      SmbusControl::Request request;
      request.mutable_fault()->set_chip( chip );
      set( *request.mutable_fault() );
      return controls.answer( request ).error();
   }
   Simulator::Chip &chip( const std::string &name ) { return board.bench().chip( name ); }

   TestSupport::ManualClock real;
   Simulator::SimulationClock clock{ real, 0 };
   Simulator::SimulatedBoard board{ KELT_BOARD "/topology.json", KELT_BOARD "/simulation.json",
                                    clock };
   Simulator::Controls controls{ board.bench(), clock };
   Simulator::Chip &sfp = chip( "sfp1-eeprom" );
   Simulator::Chip &qsfp = chip( "qsfp1-eeprom" );
   Simulator::Chip &cmis = chip( "qsfp36-eeprom" );
};

TEST_F( ModuleFaultsTest, AWrongChecksumIsWrongOnEveryPageAndNothingElse ) {
   const auto set = []( Fault &fault ) { fault.set_bad_checksum( true ); };
   const int a0 = byteOf( sfp, 63 );
   const int a2 = byteOf( sfp, 95, 0x51 );
   const int base = byteOf( qsfp, 191 );
   ASSERT_EQ( fault( "sfp1-eeprom", set ), "" );
   ASSERT_EQ( fault( "qsfp1-eeprom", set ), "" );
   ASSERT_EQ( fault( "qsfp36-eeprom", set ), "" );
   EXPECT_EQ( byteOf( sfp, 63 ), a0 ^ 0xFF );
   EXPECT_EQ( byteOf( sfp, 95, 0x51 ), a2 ^ 0xFF );
   EXPECT_EQ( byteOf( sfp, 0 ), 0x03 );
   EXPECT_EQ( byteOf( qsfp, 191 ), base ^ 0xFF );
   for ( const int page : { 0x01, 0x02 } ) {
      writeTo( cmis, 127, { page } );
      const unsigned first = page == 0x01 ? 130 : 128;
      EXPECT_EQ( byteOf( cmis, 255 ), sumOf( cmis, first, 254 ) ^ 0xFF ) << page;
   }
}

TEST_F( ModuleFaultsTest, AStuckPageIsShownAndToldWhateverIsChosen ) {
   ASSERT_EQ( fault( "qsfp1-eeprom", []( Fault &fault ) { fault.set_stuck_page( 0x03 ); } ), "" );
   writeTo( qsfp, 127, { 0x00 } );
   EXPECT_EQ( readFrom( qsfp, 127, 3 ), ( Bytes{ 0x03, 0x4B, 0x00 } ) );
   qsfp.faultsAre( {} );
   EXPECT_EQ( readFrom( qsfp, 127, 2 ), ( Bytes{ 0x00, 0x11 } ) );
}

TEST_F( ModuleFaultsTest, AWrongPageIsShownAsIfItWereTheChosenOne ) {
   ASSERT_EQ( fault( "qsfp36-eeprom", []( Fault &fault ) { fault.set_wrong_page( 0x02 ); } ), "" );
   for ( const int page : { 0x00, 0x01 } ) {
      writeTo( cmis, 127, { page } );
      EXPECT_EQ( readFrom( cmis, 127, 3 ), ( Bytes{ page, 0x4B, 0x00 } ) );
   }
}

TEST_F( ModuleFaultsTest, ABusyModuleIsSilentForThatTime ) {
   ASSERT_EQ( fault( "sfp1-eeprom", []( Fault &fault ) { fault.set_busy_ms( 250 ); } ), "" );
   EXPECT_FALSE( answers( sfp ) );
   EXPECT_FALSE( answers( sfp, 0x51 ) );
   clock.step( 249ms );
   EXPECT_FALSE( answers( sfp ) );
   clock.step( 1ms );
   EXPECT_TRUE( answers( sfp ) );
}

TEST_F( ModuleFaultsTest, OtherChipsCannotHaveThem ) {
   const auto refused = "temp-front is not a transceiver module: it can't be busy, and has neither "
                        "pages nor checksums";
   const std::vector<std::function<void( Fault & )>> all{
      []( Fault &fault ) { fault.set_bad_checksum( true ); },
      []( Fault &fault ) { fault.set_stuck_page( 0 ); },
      []( Fault &fault ) { fault.set_wrong_page( 0 ); },
      []( Fault &fault ) { fault.set_busy_ms( 1 ); }
   };
   for ( const auto &set : all )
      EXPECT_EQ( fault( "temp-front", set ), refused );
}

TEST_F( ModuleFaultsTest, AModuleWithoutPagesCannotShowAWrongOne ) {
   for ( const char *name : { "sfp1-eeprom", "qsfp32-eeprom" } ) {
      EXPECT_EQ( fault( name, []( Fault &fault ) { fault.set_stuck_page( 3 ); } ),
                 std::string( name ) + " has no pages to choose from" );
      EXPECT_EQ( fault( name, []( Fault &fault ) { fault.set_wrong_page( 3 ); } ),
                 std::string( name ) + " has no pages to choose from" );
   }
   EXPECT_EQ( fault( "qsfp1-eeprom", []( Fault &fault ) { fault.set_wrong_page( 256 ); } ),
              "256 is not within 0 to 255" );
   EXPECT_EQ( fault( "qsfp1-eeprom", []( Fault &fault ) { fault.set_busy_ms( 60001 ); } ),
              "60001 is not within 0 to 60000 ms" );
}

} // namespace

} // namespace SimulatorTest
