#include "Images.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace OpticsTest {

namespace {

using namespace Optics;
using enum Quantity;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

TEST( Sff8636Test, TellsWhoMadeItAndWhatItIs ) {
   const Module module = decoded( qsfp() );
   EXPECT_EQ( module.standard, Standard::Sff8636 );
   EXPECT_EQ( module.revision, "8636 2.8 to 2.10" );
   EXPECT_EQ( module.identifier, ( Code{ 0x11, "QSFP28" } ) );
   EXPECT_EQ( module.vendor, "ACME OPTICS" );
   EXPECT_EQ( module.oui, "00:1b:21" );
   EXPECT_EQ( module.partNumber, "ACME-100G-LR4" );
   EXPECT_EQ( module.vendorRevision, "B2" );
   EXPECT_EQ( module.serial, "SN0000456" );
   EXPECT_EQ( module.date, "2023-12-31" );
   EXPECT_EQ( module.lot, "B2" );
   EXPECT_EQ( module.connector, ( Code{ 7, "LC" } ) );
   EXPECT_EQ( module.encoding, ( Code{ 5, "64B/66B" } ) );
   EXPECT_EQ( module.extendedCompliance, ( Code{ 3, "100GBASE-LR4 or 25GBASE-LR" } ) );
   EXPECT_EQ( module.technology, ( Code{ 4, "1310 nm DFB" } ) );
   EXPECT_EQ( module.bitRate, 25750 );
   EXPECT_EQ( module.wavelength, 1310 );
   EXPECT_EQ( module.wavelengthTolerance, 5.5 );
   EXPECT_EQ( module.maximumTemperature, 75 );
   EXPECT_FALSE( module.isFlat );
   EXPECT_THAT( module.findings, IsEmpty() );
}

TEST( Sff8636Test, GivesTheExtendedComplianceOnlyIfItIsSaidToBeThere ) {
   Bytes file = qsfp();
   file[131] = 0x04;
   EXPECT_EQ( decoded( file ).extendedCompliance, std::nullopt );
   EXPECT_THAT( decoded( file ).compliance, ElementsAre( "40GBASE-SR4" ) );
}

TEST( Sff8636Test, NamesTheEncodings4To6AsItsOwnColumnDoes ) {
   for ( const auto &[number, name] :
         { std::pair( 4, "SONET scrambled" ), std::pair( 5, "64B/66B" ),
           std::pair( 6, "Manchester" ) } ) {
      Bytes file = qsfp();
      file[139] = static_cast<uint8_t>( number );
      EXPECT_EQ( decoded( file ).encoding->name, name );
   }
}

TEST( Sff8636Test, TellsThePowerOfEachClass ) {
   const struct {
      uint8_t byte;
      unsigned powerClass;
      double watts;
   } rows[] = { { 0x00, 1, 1.5 }, { 0x40, 2, 2.0 }, { 0x80, 3, 2.5 }, { 0xC0, 4, 3.5 },
                { 0xC1, 5, 4.0 }, { 0xC2, 6, 4.5 }, { 0xC3, 7, 5.0 }, { 0xE3, 8, 6.1 } };
   for ( const auto &row : rows ) {
      Bytes file = qsfp();
      file[129] = row.byte;
      file[107] = 61;
      EXPECT_EQ( decoded( file ).powerClass, row.powerClass );
      EXPECT_EQ( decoded( file ).maximumPower, row.watts );
   }
}

TEST( Sff8636Test, MeasuresEachLengthInItsUnit ) {
   Bytes file = qsfp();
   put( file, 142, { 10, 50, 30, 20, 75, 0x00 } );
   const Module module = decoded( file );
   std::vector<std::pair<std::string, double>> lengths;
   for ( const Length &length : module.lengths )
      lengths.emplace_back( length.medium, length.metres );
   EXPECT_THAT( lengths, ElementsAre( std::pair( "single mode", 10000 ), std::pair( "OM3", 100 ),
                                      std::pair( "OM2", 30 ), std::pair( "OM1", 20 ),
                                      std::pair( "OM4", 150 ) ) );
}

TEST( Sff8636Test, TakesTheLengthForACablesWhereNothingCanBeUnplugged ) {
   Bytes file = qsfp();
   put( file, 142, { 0, 0, 0, 0, 15, 0x00 } );
   file[130] = 0x23;
   const Module module = decoded( file );
   ASSERT_EQ( module.lengths.size(), 1u );
   EXPECT_EQ( module.lengths[0].medium, "cable" );
   EXPECT_EQ( module.lengths[0].metres, 15 );
}

TEST( Sff8636Test, GivesCopperItsAttenuationAndNoWavelength ) {
   Bytes file = qsfp();
   put( file, 145, { 14, 3, 0xA0 } );
   put( file, 186, { 4, 5, 6, 9 } );
   const Module module = decoded( file );
   EXPECT_EQ( module.wavelength, std::nullopt );
   EXPECT_EQ( module.wavelengthTolerance, std::nullopt );
   std::vector<std::pair<double, double>> attenuations;
   for ( const Module::Attenuation &one : module.attenuations )
      attenuations.emplace_back( one.gigahertz, one.decibel );
   EXPECT_THAT( attenuations,
                ElementsAre( std::pair( 2.5, 4 ), std::pair( 5.0, 5 ), std::pair( 7.0, 6 ),
                             std::pair( 12.9, 9 ), std::pair( 25.78, 14 ) ) );
   ASSERT_EQ( module.lengths.size(), 1u );
   EXPECT_EQ( module.lengths[0].metres, 3 );
}

TEST( Sff8636Test, HasNoMonitorsInAPassiveCableThatClaimsNone ) {
   Bytes file = qsfp();
   file[147] = 0xA0;
   file[220] = 0;
   const Module module = decoded( file );
   EXPECT_FALSE( module.hasDiagnostics );
   EXPECT_THAT( module.monitors, IsEmpty() );
   EXPECT_THAT( module.lanes, IsEmpty() );
   EXPECT_THAT( module.findings, IsEmpty() );
}

TEST( Sff8636Test, ReadsItsMonitors ) {
   const Module module = decoded( qsfp() );
   EXPECT_TRUE( module.hasDiagnostics );
   EXPECT_EQ( module.isReady, true );
   EXPECT_EQ( module.interrupts, false );
   EXPECT_EQ( module.rxPowerIsAverage, true );
   EXPECT_EQ( valueOf( module, Temperature ), 25.5 );
   EXPECT_EQ( valueOf( module, SupplyVoltage ), 3.3 );
   for ( unsigned lane = 1; lane <= 4; ++lane ) {
      EXPECT_EQ( valueOf( module, TxBias, lane ), ( 3499 + lane ) / 500.0 );
      EXPECT_EQ( valueOf( module, TxPower, lane ), ( 4999 + lane ) / 10000.0 );
      EXPECT_EQ( valueOf( module, RxPower, lane ), ( 3999 + lane ) / 10000.0 );
   }
   EXPECT_EQ( module.monitors.size(), 14u );
   EXPECT_EQ( module.lanes.size(), 4u );
}

TEST( Sff8636Test, ReadsThresholdsInTheirOrder ) {
   const Module module = decoded( qsfp() );
   EXPECT_EQ( monitorOf( module, Temperature )->thresholds, ( Thresholds{ 75, -5, 70, 0 } ) );
   EXPECT_EQ( monitorOf( module, SupplyVoltage )->thresholds,
              ( Thresholds{ 3.63, 2.97, 3.465, 3.135 } ) );
   for ( unsigned lane = 1; lane <= 4; ++lane ) {
      EXPECT_EQ( monitorOf( module, TxBias, lane )->thresholds, ( Thresholds{ 80, 2, 70, 4 } ) );
      EXPECT_EQ( monitorOf( module, TxPower, lane )->thresholds,
                 ( Thresholds{ 1.2589, 0.1259, 1, 0.1586 } ) );
      EXPECT_EQ( monitorOf( module, RxPower, lane )->thresholds,
                 ( Thresholds{ 1.259, 0.01, 1.0001, 0.0158 } ) );
   }
}

TEST( Sff8636Test, ReadsAQuartetOfFlagsFromItsHighBitDown ) {
   const struct {
      size_t byte;
      unsigned high;
      Quantity quantity;
      unsigned lane;
   } rows[] = {
      { 6, 7, Temperature, 0 }, { 7, 7, SupplyVoltage, 0 }, { 9, 7, RxPower, 1 },
      { 9, 3, RxPower, 2 },     { 10, 7, RxPower, 3 },      { 10, 3, RxPower, 4 },
      { 11, 7, TxBias, 1 },     { 11, 3, TxBias, 2 },       { 12, 7, TxBias, 3 },
      { 12, 3, TxBias, 4 },     { 13, 7, TxPower, 1 },      { 13, 3, TxPower, 2 },
      { 14, 7, TxPower, 3 },    { 14, 3, TxPower, 4 },
   };
   for ( const auto &row : rows )
      for ( unsigned i = 0; i < 4; ++i ) {
         Bytes file = qsfp();
         file[row.byte] = static_cast<uint8_t>( 1 << ( row.high - i ) );
         const Module module = decoded( file );
         for ( const Monitor &monitor : module.monitors ) {
            const bool isIt = monitor.quantity == row.quantity && monitor.lane == row.lane;
            EXPECT_EQ( monitor.flags, ( ThresholdFlags{ isIt && i == 0, isIt && i == 1,
                                                        isIt && i == 2, isIt && i == 3 } ) )
               << row.byte << "." << row.high - i << " " << monitor.lane;
         }
      }
}

TEST( Sff8636Test, ReadsTheStatesOfItsLanes ) {
   Bytes file = qsfp();
   put( file, 3, { 0x21, 0x84, 0x42 } ); // tx 2 and rx 1; equalizer 4 and fault 3; tx 3 and rx 2
   file[86] = 0x08;
   const std::vector<Lane> lanes = decoded( file ).lanes;
   for ( const Lane &lane : lanes ) {
      EXPECT_EQ( lane.rxLos, lane.number == 1 );
      EXPECT_EQ( lane.txLos, lane.number == 2 );
      EXPECT_EQ( lane.txFault, lane.number == 3 );
      EXPECT_EQ( lane.txEqualizerFault, lane.number == 4 );
      EXPECT_EQ( lane.rxLossOfLock, lane.number == 2 );
      EXPECT_EQ( lane.txLossOfLock, lane.number == 3 );
      EXPECT_EQ( lane.txDisabled, lane.number == 4 );
   }
}

TEST( Sff8636Test, LeavesOutStatesThatItDoesNotClaim ) {
   Bytes file = qsfp();
   put( file, 3, { 0xFF, 0xFF, 0xFF } );
   put( file, 193, { 0, 0, 0 } );
   const Lane lane = decoded( file ).lanes.at( 0 );
   EXPECT_EQ( lane.rxLos, true ); // no bit tells this one
   EXPECT_EQ( lane.txLos, std::nullopt );
   EXPECT_EQ( lane.txFault, std::nullopt );
   EXPECT_EQ( lane.txEqualizerFault, std::nullopt );
   EXPECT_EQ( lane.txLossOfLock, std::nullopt );
   EXPECT_EQ( lane.rxLossOfLock, std::nullopt );
   EXPECT_EQ( lane.txDisabled, std::nullopt );
}

TEST( Sff8636Test, LeavesOutMonitorsThatItDoesNotClaim ) {
   Bytes file = qsfp();
   file[220] = 0x10; // the voltage
   const Module module = decoded( file );
   EXPECT_EQ( monitorOf( module, Temperature ), nullptr );
   EXPECT_NE( monitorOf( module, SupplyVoltage ), nullptr );
   EXPECT_EQ( monitorOf( module, TxPower, 1 ), nullptr );
   EXPECT_NE( monitorOf( module, RxPower, 1 ), nullptr ); // no bit is for these two
   EXPECT_NE( monitorOf( module, TxBias, 1 ), nullptr );
   EXPECT_EQ( module.rxPowerIsAverage, false );
}

TEST( Sff8636Test, HasTemperatureAndVoltageBeforeRevision28WithoutClaimingThem ) {
   Bytes file = qsfp();
   file[1] = 7;
   file[220] = 0x0C;
   const Module module = decoded( file );
   EXPECT_EQ( valueOf( module, Temperature ), 25.5 );
   EXPECT_EQ( valueOf( module, SupplyVoltage ), 3.3 );
}

TEST( Sff8636Test, LeavesOutLanesThatItDoesNotHave ) {
   Bytes file = qsfp();
   file[113] = 0x0A;
   const Module module = decoded( file );
   ASSERT_EQ( module.lanes.size(), 2u );
   EXPECT_EQ( module.lanes[0].number, 1u );
   EXPECT_EQ( module.lanes[1].number, 3u );
   EXPECT_EQ( monitorOf( module, RxPower, 2 ), nullptr );
   EXPECT_NE( monitorOf( module, RxPower, 3 ), nullptr );
   EXPECT_EQ( module.monitors.size(), 8u );
}

TEST( Sff8636Test, ShowsAllLanesIfNoneIsSaidToBeThere ) {
   Bytes file = qsfp();
   file[113] = 0x0F;
   const Module module = decoded( file );
   EXPECT_EQ( module.lanes.size(), 4u );
   EXPECT_THAT( module.findings, ElementsAre( HasSubstr( "no lane is there" ) ) );
}

TEST( Sff8636Test, HasNeitherValuesNorFlagsWhileItsDataAreNotReady ) {
   Bytes file = qsfp();
   file[2] = 0x03;
   put( file, 3, Bytes( 12, 0xFF ) );
   const Module module = decoded( file );
   EXPECT_EQ( module.isReady, false );
   ASSERT_EQ( module.monitors.size(), 14u );
   for ( const Monitor &monitor : module.monitors ) {
      EXPECT_EQ( monitor.value, std::nullopt );
      EXPECT_EQ( monitor.flags, ThresholdFlags{} );
      EXPECT_NE( monitor.thresholds, Thresholds{} );
   }
   EXPECT_EQ( module.lanes.at( 0 ).rxLos, std::nullopt );
   EXPECT_THAT( module.flags, IsEmpty() );
   EXPECT_THAT( module.findings, ElementsAre( HasSubstr( "not ready" ) ) );
}

TEST( Sff8636Test, HasNoThresholdsInAFlatMemory ) {
   Bytes file = qsfp();
   file[2] = 0x06;
   const Module module = decoded( file );
   EXPECT_TRUE( module.isFlat );
   EXPECT_EQ( valueOf( module, Temperature ), 25.5 );
   EXPECT_EQ( monitorOf( module, Temperature )->thresholds, Thresholds{} );
   EXPECT_THAT( module.findings, IsEmpty() );
   file.resize( 256 ); // the pages above needn't be read
   EXPECT_THAT( decoded( file ).findings, IsEmpty() );
}

TEST( Sff8636Test, InterruptsWhileThePinIsLow ) {
   Bytes file = qsfp();
   file[2] = 0x00;
   EXPECT_EQ( decoded( file ).interrupts, true );
}

TEST( Sff8636Test, KnowsItsPowerModeOnlyIfThePinIsOverridden ) {
   Bytes file = qsfp();
   for ( const auto &[byte, isLow] :
         { std::pair( 0x00, std::optional<bool>() ), std::pair( 0x02, std::optional<bool>() ),
           std::pair( 0x01, std::optional( false ) ), std::pair( 0x03, std::optional( true ) ) } ) {
      file[93] = static_cast<uint8_t>( byte );
      EXPECT_EQ( decoded( file ).isLowPower, isLow );
   }
}

TEST( Sff8636Test, ReadsTheCleiCodeFromPage02IfItIsThere ) {
   Bytes file = qsfp();
   EXPECT_EQ( decoded( file ).clei, "" );
   file[129] |= 0x10;
   EXPECT_EQ( decoded( file ).clei, "CLEI012345" );
}

TEST( Sff8636Test, NamesSetFlagsOfTheModule ) {
   Bytes file = qsfp();
   file[6] = 0x03;
   EXPECT_THAT( decoded( file ).flags, ElementsAre( "initialization complete" ) );
   file[221] = 0x12;
   EXPECT_THAT( decoded( file ).flags, ElementsAre( "initialization complete", "TC ready" ) );
}

} // namespace

} // namespace OpticsTest
