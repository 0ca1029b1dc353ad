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

TEST( Sff8472Test, TellsWhoMadeItAndWhatItIs ) {
   const Module module = decoded( sfp() );
   EXPECT_EQ( module.standard, Standard::Sff8472 );
   EXPECT_EQ( module.revision, "8472 12.3" );
   EXPECT_EQ( module.identifier, ( Code{ 3, "SFP/SFP+/SFP28" } ) );
   EXPECT_EQ( module.vendor, "ACME OPTICS" );
   EXPECT_EQ( module.oui, "00:1b:21" );
   EXPECT_EQ( module.partNumber, "ACME-10G-LR" );
   EXPECT_EQ( module.vendorRevision, "A1" );
   EXPECT_EQ( module.serial, "SN0000123" );
   EXPECT_EQ( module.date, "2024-02-02" );
   EXPECT_EQ( module.lot, "A7" );
   EXPECT_EQ( module.connector, ( Code{ 7, "LC" } ) );
   EXPECT_EQ( module.encoding, ( Code{ 6, "64B/66B" } ) );
   EXPECT_THAT( module.compliance, ElementsAre( "10GBASE-LR" ) );
   EXPECT_EQ( module.bitRate, 10300 );
   EXPECT_EQ( module.wavelength, 1310 );
   EXPECT_EQ( module.powerClass, 1 );
   EXPECT_EQ( module.maximumPower, 1.0 );
   EXPECT_THAT( module.findings, IsEmpty() );
}

TEST( Sff8472Test, GivesTheLengthOfSingleModeFibreOnce ) {
   const Module module = decoded( sfp() );
   ASSERT_EQ( module.lengths.size(), 1u );
   EXPECT_EQ( module.lengths[0].medium, "single mode" );
   EXPECT_EQ( module.lengths[0].metres, 10000 );
   EXPECT_FALSE( module.lengths[0].orMore );
}

TEST( Sff8472Test, MeasuresEachLengthInItsUnit ) {
   Bytes file = sfp();
   put( file, 14, { 40, 255, 8, 3, 40, 30 } );
   const Module module = decoded( file );
   std::vector<std::pair<std::string, double>> lengths;
   for ( const Length &length : module.lengths )
      lengths.emplace_back( length.medium, length.metres );
   EXPECT_THAT( lengths, ElementsAre( std::pair( "single mode", 40000 ), std::pair( "OM2", 80 ),
                                      std::pair( "OM1", 30 ), std::pair( "OM4", 400 ),
                                      std::pair( "OM3", 300 ) ) );
}

TEST( Sff8472Test, SaysThatALengthOf255IsMoreThanTheByteHolds ) {
   Bytes file = sfp();
   put( file, 14, { 0, 0, 0, 0, 255, 0 } );
   const Module module = decoded( file );
   ASSERT_EQ( module.lengths.size(), 1u );
   EXPECT_EQ( module.lengths[0].metres, 2540 );
   EXPECT_TRUE( module.lengths[0].orMore );
}

TEST( Sff8472Test, GivesACableMetresAndAttenuationButNoWavelength ) {
   Bytes file = sfp();
   file[8] = 0x04;
   put( file, 14, { 7, 15, 0, 0, 3, 0 } );
   put( file, 60, { 0x01, 0x00 } );
   const Module module = decoded( file );
   ASSERT_EQ( module.lengths.size(), 1u );
   EXPECT_EQ( module.lengths[0].medium, "cable" );
   EXPECT_EQ( module.lengths[0].metres, 3 );
   ASSERT_EQ( module.attenuations.size(), 2u );
   EXPECT_EQ( module.attenuations[0].gigahertz, 12.9 );
   EXPECT_EQ( module.attenuations[0].decibel, 7 );
   EXPECT_EQ( module.attenuations[1].decibel, 15 );
   EXPECT_EQ( module.wavelength, std::nullopt );
   EXPECT_THAT( module.compliance,
                ElementsAre( "10GBASE-LR", "passive cable", "SFF-8431 appendix E" ) );
}

TEST( Sff8472Test, NamesTheEncodings4To6AsItsOwnColumnDoes ) {
   for ( const auto &[number, name] :
         { std::pair( 4, "Manchester" ), std::pair( 5, "SONET scrambled" ),
           std::pair( 6, "64B/66B" ) } ) {
      Bytes file = sfp();
      file[11] = static_cast<uint8_t>( number );
      EXPECT_EQ( decoded( file ).encoding->name, name );
   }
}

TEST( Sff8472Test, NamesReservedCodesByTheirNumber ) {
   Bytes file = sfp();
   put( file, 2, { 0x30 } );
   put( file, 11, { 0x2A } );
   const Module module = decoded( file );
   EXPECT_EQ( module.connector, ( Code{ 0x30, "reserved (30h)" } ) );
   EXPECT_EQ( module.encoding, ( Code{ 0x2A, "reserved (2Ah)" } ) );
   file[2] = 0x90;
   EXPECT_EQ( decoded( file ).connector, ( Code{ 0x90, "vendor specific (90h)" } ) );
}

TEST( Sff8472Test, ReadsARateAbove25GBdFromItsOtherByte ) {
   Bytes file = sfp();
   file[12] = 0xFF;
   file[66] = 103;
   EXPECT_EQ( decoded( file ).bitRate, 25750 );
   file[66] = 0;
   EXPECT_EQ( decoded( file ).bitRate, std::nullopt );
}

TEST( Sff8472Test, TakesThePowerFromItsLevel ) {
   Bytes file = sfp();
   file[64] = 0x02;
   EXPECT_EQ( decoded( file ).maximumPower, 1.5 );
   file[64] = 0x22;
   EXPECT_EQ( decoded( file ).maximumPower, 2.0 );
   file[64] = 0x62;
   file[a2 + 66] = 35;
   EXPECT_EQ( decoded( file ).powerClass, 4 );
   EXPECT_EQ( decoded( file ).maximumPower, 3.5 );
   file[92] = 0x58; // externally calibrated: there, byte 66 is part of a constant
   EXPECT_EQ( decoded( file ).maximumPower, std::nullopt );
}

TEST( Sff8472Test, ReadsItsMonitors ) {
   const Module module = decoded( sfp() );
   EXPECT_TRUE( module.hasDiagnostics );
   EXPECT_EQ( module.isReady, true );
   EXPECT_EQ( module.rxPowerIsAverage, true );
   EXPECT_EQ( valueOf( module, Temperature ), 25.5 );
   EXPECT_EQ( valueOf( module, SupplyVoltage ), 3.3 );
   EXPECT_EQ( valueOf( module, TxBias, 1 ), 7.0 );
   EXPECT_EQ( valueOf( module, TxPower, 1 ), 0.5 );
   EXPECT_EQ( valueOf( module, RxPower, 1 ), 0.4 );
   EXPECT_EQ( module.monitors.size(), 5u );
   EXPECT_EQ( monitorOf( module, Temperature )->unit, "°C" );
   EXPECT_EQ( monitorOf( module, TxBias, 1 )->unit, "mA" );
}

TEST( Sff8472Test, ReadsTemperaturesBelowZero ) {
   Bytes file = sfp();
   for ( const auto &[word, celsius] :
         { std::pair( 0xFF00, -1.0 ), std::pair( 0xE700, -25.0 ), std::pair( 0x8000, -128.0 ),
           std::pair( 0xFFFF, -0.00390625 ) } ) {
      put( file, a2 + 96, { uint8_t( word >> 8 ), uint8_t( word ) } );
      EXPECT_EQ( valueOf( decoded( file ), Temperature ), celsius );
   }
}

TEST( Sff8472Test, ReadsThresholdsInTheirOrder ) {
   const Module module = decoded( sfp() );
   EXPECT_EQ( monitorOf( module, Temperature )->thresholds, ( Thresholds{ 75, -5, 70, 0 } ) );
   EXPECT_EQ( monitorOf( module, SupplyVoltage )->thresholds,
              ( Thresholds{ 3.63, 2.97, 3.465, 3.135 } ) );
   EXPECT_EQ( monitorOf( module, TxBias, 1 )->thresholds, ( Thresholds{ 80, 2, 70, 4 } ) );
   EXPECT_EQ( monitorOf( module, TxPower, 1 )->thresholds,
              ( Thresholds{ 1.2589, 0.1259, 1, 0.1586 } ) );
   EXPECT_EQ( monitorOf( module, RxPower, 1 )->thresholds,
              ( Thresholds{ 1.259, 0.01, 1.0001, 0.0158 } ) );
}

TEST( Sff8472Test, HasNoThresholdsWhereTheMakerSetNone ) {
   for ( const uint8_t blank : { 0x00, 0xFF } ) {
      Bytes file = sfp();
      put( file, a2 + 32, Bytes( 8, blank ) );
      const Module module = decoded( file );
      EXPECT_EQ( monitorOf( module, RxPower, 1 )->thresholds, Thresholds{} );
      EXPECT_NE( monitorOf( module, TxPower, 1 )->thresholds, Thresholds{} );
   }
}

TEST( Sff8472Test, ReadsEachFlagAtItsBit ) {
   using Flag = std::optional<bool> ThresholdFlags::*;
   const Flag highAlarm = &ThresholdFlags::highAlarm, lowAlarm = &ThresholdFlags::lowAlarm;
   const Flag highWarning = &ThresholdFlags::highWarning, lowWarning = &ThresholdFlags::lowWarning;
   const struct {
      size_t byte;
      unsigned bit;
      Quantity quantity;
      unsigned lane;
      Flag flag;
   } rows[] = {
      { 112, 7, Temperature, 0, highAlarm },     { 112, 6, Temperature, 0, lowAlarm },
      { 112, 5, SupplyVoltage, 0, highAlarm },   { 112, 4, SupplyVoltage, 0, lowAlarm },
      { 112, 3, TxBias, 1, highAlarm },          { 112, 2, TxBias, 1, lowAlarm },
      { 112, 1, TxPower, 1, highAlarm },         { 112, 0, TxPower, 1, lowAlarm },
      { 113, 7, RxPower, 1, highAlarm },         { 113, 6, RxPower, 1, lowAlarm },
      { 116, 7, Temperature, 0, highWarning },   { 116, 6, Temperature, 0, lowWarning },
      { 116, 5, SupplyVoltage, 0, highWarning }, { 116, 4, SupplyVoltage, 0, lowWarning },
      { 116, 3, TxBias, 1, highWarning },        { 116, 2, TxBias, 1, lowWarning },
      { 116, 1, TxPower, 1, highWarning },       { 116, 0, TxPower, 1, lowWarning },
      { 117, 7, RxPower, 1, highWarning },       { 117, 6, RxPower, 1, lowWarning },
   };
   for ( const auto &row : rows ) {
      Bytes file = sfp();
      file[a2 + row.byte] = static_cast<uint8_t>( 1 << row.bit );
      const Module module = decoded( file );
      unsigned set = 0;
      for ( const Monitor &monitor : module.monitors )
         for ( const Flag flag : { highAlarm, lowAlarm, highWarning, lowWarning } )
            set += ( monitor.flags.*flag ).value();
      EXPECT_EQ( set, 1u ) << row.byte << "." << row.bit;
      EXPECT_EQ( monitorOf( module, row.quantity, row.lane )->flags.*row.flag, true )
         << row.byte << "." << row.bit;
   }
}

TEST( Sff8472Test, HasNoFlagsThatItDoesNotClaim ) {
   Bytes file = sfp();
   file[93] = 0x70;
   put( file, a2 + 112, { 0xFF, 0xFF, 0, 0, 0xFF, 0xFF } );
   const Module module = decoded( file );
   for ( const Monitor &monitor : module.monitors )
      EXPECT_EQ( monitor.flags, ThresholdFlags{} );
}

TEST( Sff8472Test, HasNoValuesWhileItsDataAreNotReady ) {
   Bytes file = sfp();
   file[a2 + 110] = 0x01;
   const Module module = decoded( file );
   EXPECT_EQ( module.isReady, false );
   ASSERT_EQ( module.monitors.size(), 5u );
   for ( const Monitor &monitor : module.monitors ) {
      EXPECT_EQ( monitor.value, std::nullopt );
      EXPECT_NE( monitor.thresholds, Thresholds{} );
   }
   EXPECT_THAT( module.findings, ElementsAre( HasSubstr( "not ready" ) ) );
}

TEST( Sff8472Test, HasNoDiagnosticsThatItDoesNotClaim ) {
   Bytes file = sfp();
   file[92] = 0x28;
   const Module module = decoded( file );
   EXPECT_FALSE( module.hasDiagnostics );
   EXPECT_THAT( module.monitors, IsEmpty() );
   EXPECT_THAT( module.lanes, IsEmpty() );
   EXPECT_THAT( module.findings, IsEmpty() );
}

TEST( Sff8472Test, SaysThatItsMonitorsNeedAnotherAddress ) {
   Bytes file = sfp();
   file[92] = 0x6C;
   const Module module = decoded( file );
   EXPECT_FALSE( module.hasDiagnostics );
   EXPECT_THAT( module.monitors, IsEmpty() );
   EXPECT_THAT( module.findings, ElementsAre( HasSubstr( "switched to" ) ) );
}

TEST( Sff8472Test, ReadsTheStatesOfItsLane ) {
   Bytes file = sfp();
   const auto lane = [&]( uint8_t status ) {
      file[a2 + 110] = status;
      return decoded( file ).lanes.at( 0 );
   };
   EXPECT_EQ( lane( 0x02 ).rxLos, true );
   EXPECT_EQ( lane( 0x02 ).txFault, false );
   EXPECT_EQ( lane( 0x02 ).txDisabled, false );
   EXPECT_EQ( lane( 0x04 ).txFault, true );
   EXPECT_EQ( lane( 0x04 ).rxLos, false );
   EXPECT_EQ( lane( 0x80 ).txDisabled, true ); // the pin
   EXPECT_EQ( lane( 0x40 ).txDisabled, true ); // the bit
   file[93] = 0x80;                            // none of the bits is implemented
   EXPECT_EQ( lane( 0xC6 ).rxLos, std::nullopt );
   EXPECT_EQ( lane( 0xC6 ).txFault, std::nullopt );
   EXPECT_EQ( lane( 0xC6 ).txDisabled, std::nullopt );
}

TEST( Sff8472Test, MeasuresTheLaserOfACooledTransmitterWithThresholdsForIt ) {
   Bytes file = sfp();
   put( file, a2 + 40, { 0x32, 0x00, 0x14, 0x00, 0x2D, 0x00, 0x19, 0x00 } );
   put( file, a2 + 106, { 0x23, 0x40, 0xFF, 0x38 } ); // 35.25 degrees, -20 mA
   EXPECT_EQ( monitorOf( decoded( file ), LaserTemperature, 1 ), nullptr );
   file[64] = 0x04;
   const Module module = decoded( file );
   EXPECT_EQ( valueOf( module, LaserTemperature, 1 ), 35.25 );
   EXPECT_EQ( monitorOf( module, LaserTemperature, 1 )->thresholds,
              ( Thresholds{ 50, 20, 45, 25 } ) );
   EXPECT_EQ( monitorOf( module, TecCurrent, 1 ), nullptr );
   put( file, a2 + 48, { 0x07, 0xD0, 0xF8, 0x30, 0x03, 0xE8, 0xFC, 0x18 } );
   EXPECT_EQ( valueOf( decoded( file ), TecCurrent, 1 ), -20 );
   EXPECT_EQ( monitorOf( decoded( file ), TecCurrent, 1 )->thresholds,
              ( Thresholds{ 200, -200, 100, -100 } ) );
}

} // namespace

} // namespace OpticsTest
