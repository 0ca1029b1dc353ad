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

TEST( CmisTest, TellsWhoMadeItAndWhatItIs ) {
   const Module module = decoded( qsfpDd() );
   EXPECT_EQ( module.standard, Standard::Cmis );
   EXPECT_EQ( module.revision, "CMIS 5.2" );
   EXPECT_EQ( module.identifier, ( Code{ 0x18, "QSFP-DD" } ) );
   EXPECT_EQ( module.vendor, "ACME OPTICS" );
   EXPECT_EQ( module.oui, "00:1b:21" );
   EXPECT_EQ( module.partNumber, "ACME-400G-DR4" );
   EXPECT_EQ( module.vendorRevision, "C3" );
   EXPECT_EQ( module.serial, "SN0000789" );
   EXPECT_EQ( module.date, "2024-02-29" );
   EXPECT_EQ( module.lot, "C3" );
   EXPECT_EQ( module.clei, "CLEI543210" );
   EXPECT_EQ( module.connector, ( Code{ 0x0C, "MPO 1x12" } ) );
   EXPECT_EQ( module.technology, ( Code{ 6, "1310 nm EML" } ) );
   EXPECT_EQ( module.mediaType, ( Code{ 2, "single mode fibre" } ) );
   EXPECT_EQ( module.powerClass, 6 );
   EXPECT_EQ( module.maximumPower, 12.0 );
   EXPECT_EQ( module.wavelength, 1310 );
   EXPECT_EQ( module.wavelengthTolerance, 5.5 );
   EXPECT_EQ( module.maximumTemperature, 70 );
   EXPECT_EQ( module.minimumTemperature, -5 );
   EXPECT_EQ( module.firmware, "1.7" );
   EXPECT_EQ( module.hardware, "2.9" );
   EXPECT_FALSE( module.isFlat );
   ASSERT_EQ( module.lengths.size(), 1u );
   EXPECT_EQ( module.lengths[0].metres, 500 );
   EXPECT_THAT( module.findings, IsEmpty() );
}

TEST( CmisTest, ListsItsApplications ) {
   const std::vector<Application> applications = decoded( qsfpDd() ).applications;
   ASSERT_EQ( applications.size(), 2u );
   EXPECT_EQ( applications[0].number, 1u );
   EXPECT_EQ( applications[0].host, ( Code{ 0x11, "400GAUI-8 C2M" } ) );
   EXPECT_EQ( applications[0].media, ( Code{ 0x1C, "400GBASE-DR4" } ) );
   EXPECT_EQ( applications[0].hostLanes, 8u );
   EXPECT_EQ( applications[0].mediaLanes, 4u );
   EXPECT_EQ( applications[0].hostStarts, 0x01 );
   EXPECT_EQ( applications[0].mediaStarts, 0x01 );
   EXPECT_EQ( applications[1].host.name, "100GAUI-2 C2M" );
   EXPECT_EQ( applications[1].media.name, "100GBASE-DR" );
   EXPECT_EQ( applications[1].hostStarts, 0x55 );
   EXPECT_EQ( applications[1].mediaStarts, 0x0F );
}

TEST( CmisTest, TakesTheNameOfAMediaInterfaceFromTheTableOfItsMediaType ) {
   Bytes file = qsfpDd();
   file[87] = 0x02;
   for ( const auto &[type, name] :
         { std::pair( 1, "10GBASE-SR" ), std::pair( 2, "reserved (02h)" ),
           std::pair( 4, "active cable, BER < 5e-5" ), std::pair( 5, "2.5GBASE-T" ) } ) {
      file[85] = static_cast<uint8_t>( type );
      EXPECT_EQ( decoded( file ).applications.at( 0 ).media.name, name );
   }
}

TEST( CmisTest, GoesOnWithTheApplicationsOfPage01 ) {
   Bytes file = qsfpDd();
   for ( size_t i = 0; i < 8; ++i )
      put( file, 86 + 4 * i, { 0x0D, 0x14, 0x21, 0x01 } );
   for ( size_t i = 0; i < 7; ++i )
      put( file, page01OfCmis + 223 + 4 * i, { 0x4B, 0x14, 0x11, uint8_t( 1 << i ) } );
   file[page01OfCmis + 190] = 0x5A;
   const std::vector<Application> applications = decoded( file ).applications;
   ASSERT_EQ( applications.size(), 15u );
   EXPECT_EQ( applications[8].host.name, "100GAUI-1-S C2M" );
   EXPECT_EQ( applications[14].number, 15u );
   EXPECT_EQ( applications[14].hostStarts, 0x40 );
   EXPECT_EQ( applications[14].mediaStarts, 0x5A );
}

TEST( CmisTest, ReadsItsMonitors ) {
   const Module module = decoded( qsfpDd() );
   EXPECT_EQ( module.rxPowerIsAverage, true );
   EXPECT_EQ( valueOf( module, Temperature ), 25.5 );
   EXPECT_EQ( valueOf( module, SupplyVoltage ), 3.3 );
   EXPECT_NEAR( valueOf( module, TecCurrent ).value(), 25.00076, 1e-5 );
   EXPECT_EQ( monitorOf( module, TecCurrent )->unit, "%" );
   for ( unsigned lane = 1; lane <= 4; ++lane ) {
      EXPECT_EQ( valueOf( module, TxBias, lane ), ( 3499 + lane ) / 250.0 ); // counts 2 * 2 uA
      EXPECT_EQ( valueOf( module, TxPower, lane ), ( 4999 + lane ) / 10000.0 );
      EXPECT_EQ( valueOf( module, RxPower, lane ), ( 3999 + lane ) / 10000.0 );
   }
   EXPECT_EQ( module.monitors.size(), 15u );
}

TEST( CmisTest, ScalesTheBiasAndItsThresholds ) {
   Bytes file = qsfpDd();
   for ( const auto &[byte, milliamperes, highAlarm] :
         { std::tuple( 0x07, 7.0, 80.0 ), std::tuple( 0x0F, 14.0, 160.0 ),
           std::tuple( 0x17, 28.0, 320.0 ) } ) {
      file[page01OfCmis + 160] = static_cast<uint8_t>( byte );
      EXPECT_EQ( valueOf( decoded( file ), TxBias, 1 ), milliamperes );
      EXPECT_EQ( monitorOf( decoded( file ), TxBias, 1 )->thresholds.highAlarm, highAlarm );
   }
   file[page01OfCmis + 160] = 0x1F;
   const Module module = decoded( file );
   EXPECT_EQ( monitorOf( module, TxBias, 1 ), nullptr );
   EXPECT_THAT( module.findings, ElementsAre( HasSubstr( "scale of the tx bias" ) ) );
}

TEST( CmisTest, ReadsThresholdsInTheirOrder ) {
   const Module module = decoded( qsfpDd() );
   EXPECT_EQ( monitorOf( module, Temperature )->thresholds, ( Thresholds{ 75, -5, 70, 0 } ) );
   EXPECT_EQ( monitorOf( module, SupplyVoltage )->thresholds,
              ( Thresholds{ 3.63, 2.97, 3.465, 3.135 } ) );
   EXPECT_EQ( monitorOf( module, TxPower, 4 )->thresholds,
              ( Thresholds{ 1.2589, 0.1259, 1, 0.1586 } ) );
   EXPECT_EQ( monitorOf( module, TxBias, 4 )->thresholds, ( Thresholds{ 160, 4, 140, 8 } ) );
   EXPECT_EQ( monitorOf( module, RxPower, 4 )->thresholds,
              ( Thresholds{ 1.259, 0.01, 1.0001, 0.0158 } ) );
}

TEST( CmisTest, MeasuresByTheAuxiliaryMonitorsWhatTheModuleSays ) {
   Bytes file = qsfpDd();
   file[page01OfCmis + 159] = 0x1C;
   put( file, 18, { 0xC0, 0x01, 0x1E, 0x80, 0x46, 0x50 } );
   put( file, page02OfCmis + 152, { 0x32, 0x00, 0x14, 0x00, 0x2D, 0x00, 0x19, 0x00 } );
   put( file, page02OfCmis + 160, { 0x4E, 0x20, 0x27, 0x10, 0x46, 0x50, 0x2E, 0xE0 } );
   file[page01OfCmis + 145] = 0x05; // TEC, laser temperature, second voltage
   file[10] = 0x10;                 // Aux2, high alarm
   file[11] = 0x08;                 // Aux3, low warning
   const Module module = decoded( file );
   EXPECT_EQ( monitorOf( module, Temperature ), nullptr );
   EXPECT_EQ( monitorOf( module, SupplyVoltage ), nullptr );
   EXPECT_NEAR( valueOf( module, TecCurrent ).value(), -49.9985, 1e-4 );
   EXPECT_EQ( valueOf( module, LaserTemperature ), 30.5 );
   EXPECT_EQ( monitorOf( module, LaserTemperature )->thresholds, ( Thresholds{ 50, 20, 45, 25 } ) );
   EXPECT_EQ( monitorOf( module, LaserTemperature )->flags,
              ( ThresholdFlags{ true, false, false, false } ) );
   EXPECT_EQ( valueOf( module, SecondVoltage ), 1.8 );
   EXPECT_EQ( monitorOf( module, SecondVoltage )->thresholds, ( Thresholds{ 2, 1, 1.8, 1.2 } ) );
   EXPECT_EQ( monitorOf( module, SecondVoltage )->flags,
              ( ThresholdFlags{ false, false, false, true } ) );
   EXPECT_EQ( monitorOf( module, TecCurrent )->flags, ( ThresholdFlags{ 0, 0, 0, 0 } ) );
   file[page01OfCmis + 145] = 0x00; // Aux1 is the maker's own, Aux3 a second laser temperature
   EXPECT_EQ( monitorOf( decoded( file ), TecCurrent ), nullptr );
   EXPECT_EQ( monitorOf( decoded( file ), SecondVoltage ), nullptr );
}

TEST( CmisTest, ReadsAQuartetOfFlagsFromItsLowBitUp ) {
   for ( const auto &[low, quantity] :
         { std::pair( 0u, Temperature ), std::pair( 4u, SupplyVoltage ) } )
      for ( unsigned i = 0; i < 4; ++i ) {
         Bytes file = qsfpDd();
         file[9] = static_cast<uint8_t>( 1 << ( low + i ) );
         const Module module = decoded( file );
         for ( const Monitor &monitor : module.monitors ) {
            const bool isIt = monitor.quantity == quantity;
            EXPECT_EQ( monitor.flags, ( ThresholdFlags{ isIt && i == 0, isIt && i == 1,
                                                        isIt && i == 2, isIt && i == 3 } ) );
         }
      }
}

TEST( CmisTest, LeavesOutMonitorsThatItDoesNotClaim ) {
   Bytes file = qsfpDd();
   put( file, page01OfCmis + 159, { 0x02, 0x04 } );
   const Module module = decoded( file );
   EXPECT_EQ( module.monitors.size(), 5u );
   EXPECT_NE( monitorOf( module, SupplyVoltage ), nullptr );
   EXPECT_NE( monitorOf( module, RxPower, 4 ), nullptr );
}

TEST( CmisTest, NamesTheStateOfTheModule ) {
   Bytes file = qsfpDd();
   file[41] = 1;
   const auto module = [&]( uint8_t byte ) {
      file[3] = byte;
      return decoded( file );
   };
   EXPECT_EQ( module( 0x03 ).state, ( Code{ 1, "low power" } ) );
   EXPECT_EQ( module( 0x03 ).isLowPower, true );
   EXPECT_EQ( module( 0x03 ).interrupts, false );
   EXPECT_EQ( module( 0x06 ).state, ( Code{ 3, "ready" } ) );
   EXPECT_EQ( module( 0x06 ).isLowPower, false );
   EXPECT_EQ( module( 0x06 ).interrupts, true );
   EXPECT_EQ( module( 0x06 ).faultCause, std::nullopt );
   EXPECT_EQ( module( 0x0B ).state, ( Code{ 5, "fault" } ) );
   EXPECT_EQ( module( 0x0B ).faultCause, ( Code{ 1, "TEC runaway" } ) );
   EXPECT_EQ( module( 0x0B ).isLowPower, std::nullopt );
   EXPECT_EQ( module( 0x0F ).state, ( Code{ 7, "reserved (07h)" } ) );
}

TEST( CmisTest, NamesSetFlagsOfTheModule ) {
   Bytes file = qsfpDd();
   file[8] = 0x05;
   EXPECT_THAT( decoded( file ).flags,
                ElementsAre( "module state changed", "error in the data path's firmware" ) );
}

TEST( CmisTest, HasNoMonitorsInAFlatMemory ) {
   Bytes file = qsfpDd();
   file[2] = 0x80;
   const Module module = decoded( file );
   EXPECT_TRUE( module.isFlat );
   EXPECT_FALSE( module.hasDiagnostics );
   EXPECT_THAT( module.monitors, IsEmpty() );
   EXPECT_THAT( module.lanes, IsEmpty() );
   file.resize( 256 );
   const Standard standard = Standard::Cmis;
   EXPECT_THAT( decode( imageOfFile( file, standard ), standard ).findings, IsEmpty() );
}

TEST( CmisTest, GivesACableItsLengthAndAttenuation ) {
   Bytes file = qsfpDd();
   file[212] = 0x0A;
   put( file, 202, { 0x43, 0x23, 4, 5, 7, 11 } ); // 3 m
   const Module module = decoded( file );
   ASSERT_EQ( module.lengths.size(), 2u );
   EXPECT_EQ( module.lengths[0].medium, "cable" );
   EXPECT_EQ( module.lengths[0].metres, 3 );
   ASSERT_EQ( module.attenuations.size(), 4u );
   EXPECT_EQ( module.attenuations[3].gigahertz, 25.8 );
   EXPECT_EQ( module.attenuations[3].decibel, 11 );
   EXPECT_EQ( module.wavelength, std::nullopt );
   file[202] = 0xC2;
   EXPECT_EQ( decoded( file ).lengths.at( 0 ).metres, 200 );
   file[202] = 0xFE;
   EXPECT_FALSE( decoded( file ).lengths.at( 0 ).orMore );
   file[202] = 0xFF;
   EXPECT_EQ( decoded( file ).lengths.at( 0 ).metres, 6300 );
   EXPECT_TRUE( decoded( file ).lengths.at( 0 ).orMore );
}

TEST( CmisTest, MeasuresTheLengthOfEachFibreInItsUnit ) {
   Bytes file = qsfpDd();
   put( file, page01OfCmis + 132, { 0x82, 75, 50, 35, 30 } );
   std::vector<std::pair<std::string, double>> lengths;
   for ( const Length &length : decoded( file ).lengths )
      lengths.emplace_back( length.medium, length.metres );
   EXPECT_THAT( lengths, ElementsAre( std::pair( "single mode", 20000 ), std::pair( "OM5", 150 ),
                                      std::pair( "OM4", 100 ), std::pair( "OM3", 70 ),
                                      std::pair( "OM2", 30 ) ) );
   file[page01OfCmis + 136] = 255; // means 255 m, unlike in the other standards
   EXPECT_EQ( decoded( file ).lengths.back().metres, 255 );
   EXPECT_FALSE( decoded( file ).lengths.back().orMore );
   file[page01OfCmis + 132] = 0xC2;
   EXPECT_EQ( decoded( file ).lengths.size(), 4u );
   EXPECT_THAT( decoded( file ).findings, ElementsAre( HasSubstr( "reserved multiplier" ) ) );
}

} // namespace

} // namespace OpticsTest
