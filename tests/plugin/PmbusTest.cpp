#include "OrbisGeneric/Drivers/Pmbus.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "support/PluginFixture.h"
#include "support/ScriptedHam.h"

namespace {

using Drivers::Pmbus;

class PmbusTest : public PluginFixture {
 protected:
   PmbusTest() { pmbus.ham_ = &ham; }

   static Drivers::DriverArgs withArgs( std::map<std::string, std::string> driverArgs ) {
      Drivers::DriverArgs args;
      args.driverArgs = std::move( driverArgs );
      return args;
   }
   std::unique_ptr<Component::LogicalDevice::Fan> fan( const char *fanId, const char *maxFanRpm,
                                                       const char *pec = "" ) {
      return std::unique_ptr<Component::LogicalDevice::Fan>( pmbus.newFan(
         withArgs( { { "fanId", fanId }, { "maxFanRpm", maxFanRpm }, { "pec", pec } } ) ) );
   }
   ScriptedHam ham;
   Pmbus pmbus;
   Pmbus::Psu psu{ &pmbus };
   float value = 21.0f;
   int integer = 77;
};

TEST_F( PmbusTest, EveryReadingHasItsCommand ) {
   const pl_psu_ops &ops = *psu.record_.ops;
   pl_psu *record = &psu.record_;
   ham.expectBatch( { read16( 0x88 ).answers( { 0xC0, 0xD3 } ) } ); // 960 / 64
   EXPECT_EQ( ops.get_input_voltage( record, &value ), PL_STATUS_OK );
   EXPECT_EQ( value, 15.0f );
   ham.expectBatch( { read16( 0x89 ).answers( { 0x11, 0xF0 } ) } ); // 17 / 4
   EXPECT_EQ( ops.get_input_current( record, &value ), PL_STATUS_OK );
   EXPECT_EQ( value, 4.25f );
   ham.expectBatch( { read16( 0x8C ).answers( { 0x2A, 0xF8 } ) } ); // 42 / 2
   EXPECT_EQ( ops.get_output_current( record, &value ), PL_STATUS_OK );
   EXPECT_EQ( value, 21.0f );
   ham.expectBatch( { read16( 0x96 ).answers( { 0x6F, 0x08 } ) } ); // 111 * 2
   EXPECT_EQ( ops.get_output_power( record, &value ), PL_STATUS_OK );
   EXPECT_EQ( value, 222.0f );
   ham.expectBatch( { read16( 0x97 ).answers( { 0xFF, 0x03 } ) } ); // 1023, the largest mantissa
   EXPECT_EQ( ops.get_input_power( record, &value ), PL_STATUS_OK );
   EXPECT_EQ( value, 1023.0f );
}

TEST_F( PmbusTest, ALinear11WordHasASignedMantissaAndASignedExponent ) {
   EXPECT_EQ( Pmbus::linearToReal( 0x7FF, 0, 11, 5 ), -1.0f );
   EXPECT_EQ( Pmbus::linearToReal( 0x7FF, 3, 11, 5 ), -8.0f );
   EXPECT_EQ( Pmbus::linearToReal( 0x7FF, 0x1F, 11, 5 ), -0.5f );
   EXPECT_EQ( Pmbus::linearToReal( 0x400, 0, 11, 5 ), -1024.0f );
   EXPECT_EQ( Pmbus::linearToReal( 1, 0x10, 11, 5 ), 1.0f / 65536 );
   EXPECT_EQ( Pmbus::linearToReal( 1, 0x0F, 11, 5 ), 32768.0f );
}

TEST_F( PmbusTest, ReadsModeAndOutputVoltageInOneBatch ) {
   ham.expectBatch(
      { read8( 0x20 ).answers( { 0x17 } ), read16( 0x8B ).answers( { 0x00, 0x18 } ) } );
   EXPECT_EQ( psu.get_output_voltage( &value ), PL_STATUS_OK );
   EXPECT_EQ( value, 12.0f ); // 0x1800 / 512
}

TEST_F( PmbusTest, AnOutputVoltageWordOf0x8000OrMoreIsNegative ) {
   ham.expectBatch(
      { read8( 0x20 ).answers( { 0x17 } ), read16( 0x8B ).answers( { 0x00, 0x80 } ) } );
   EXPECT_EQ( psu.get_output_voltage( &value ), PL_STATUS_OK );
   EXPECT_EQ( value, -64.0f );
}

TEST_F( PmbusTest, AModeThatIsNotLinearStopsTheProcess ) {
   EXPECT_DEATH(
      {
         ham.expectBatch(
            { read8( 0x20 ).answers( { 0x40 } ), read16( 0x8B ).answers( { 0x00, 0x18 } ) } );
         psu.get_output_voltage( &value );
      },
      ::testing::AllOf( ::testing::HasSubstr( "OrbisGeneric/Drivers/Pmbus.cpp" ),
                        ::testing::HasSubstr( "Assertion `( reg1 & 0xe0 ) == 0' failed" ) ) );
}

TEST_F( PmbusTest, PassesABusFailureUpAndLeavesTheReadingAlone ) {
   for ( int failing : { 0, 1 } ) {
      std::vector<Transfer> batch = { read8( 0x20 ), read16( 0x8B ) };
      batch[failing] = batch[failing].fails( 6 );
      ham.expectBatch( batch );
      EXPECT_EQ( psu.get_output_voltage( &value ), 6 );
   }
   ham.expectBatch( { read16( 0x88 ).fails( 4 ) } );
   EXPECT_EQ( psu.get_input_voltage( &value ), 4 );
   EXPECT_EQ( value, 21.0f );
   ham.expectBatch( { read16( 0x79 ).fails( 6 ) } );
   EXPECT_EQ( psu.get_power_ok( &integer ), 6 );
   ham.expectBatch( { read16( 0x90 ).fails( 6 ) } );
   EXPECT_EQ( fan( "1", "100" )->getRpm( &integer ), 6 );
   EXPECT_EQ( integer, 77 );
}

TEST_F( PmbusTest, ARunningSupplyThatReportsPowerNotGoodIsAFault ) {
   ham.expectBatch( { read16( 0x79 ).answers( { 0x00, 0x08 } ) } );
   EXPECT_EQ( psu.get_power_ok( &integer ), 2 );
   EXPECT_EQ( integer, 77 );
}

TEST_F( PmbusTest, PowerIsGoodUnlessTheSupplySaysItIsNot ) {
   struct {
      Bytes word;
      int ok;
   } const rows[] = {
      { { 0x40, 0x08 }, 0 }, { { 0x00, 0x00 }, 1 }, { { 0x40, 0x00 }, 1 }, { { 0xBF, 0xF7 }, 1 }
   };
   for ( const auto &row : rows ) {
      ham.expectBatch( { read16( 0x79 ).answers( row.word ) } );
      EXPECT_EQ( psu.get_power_ok( &integer ), PL_STATUS_OK );
      EXPECT_EQ( integer, row.ok );
   }
}

TEST_F( PmbusTest, AFansSpeedIsCutToAWholeNumber ) {
   ham.expectBatch( { read16( 0x90 ).answers( { 0xFF, 0xFB } ) } ); // 1023 / 2
   EXPECT_EQ( fan( "1", "100" )->getRpm( &integer ), PL_STATUS_OK );
   EXPECT_EQ( integer, 511 );
   ham.expectBatch( { read16( 0x91 ).answers( { 0x71, 0x2A } ) } ); // 625 * 32
   EXPECT_EQ( fan( "2", "100" )->getRpm( &integer ), PL_STATUS_OK );
   EXPECT_EQ( integer, 20000 );
}

TEST_F( PmbusTest, AFansDutyIsItsShareOfTheMaximumInPercent ) {
   ham.expectBatch( { write16( 0x3B ).carries( { 100, 0 } ) } );
   EXPECT_EQ( fan( "1", "20000" )->setRpm( 20000 ), PL_STATUS_OK );
   ham.expectBatch( { write16( 0x3C ).carries( { 49, 0 } ) } );
   EXPECT_EQ( fan( "2", "20000" )->setRpm( 9999 ), PL_STATUS_OK );
   ham.expectBatch( { write16( 0x3B ).carries( { 100, 0 } ) } );
   EXPECT_EQ( fan( "1", "20000" )->setRpm( 40000 ), PL_STATUS_OK );
   EXPECT_TRUE( TestHost::traced( 6, "Setting fan 0 duty cycle to 200" ) );
}

TEST_F( PmbusTest, ANegativeDutyIsFullDuty ) {
   ham.expectBatch( { write16( 0x3B ).carries( { 0, 0 } ) } );
   EXPECT_EQ( fan( "1", "20000" )->setRpm( -1 ), PL_STATUS_OK );
   ham.expectBatch( { write16( 0x3B ).carries( { 100, 0 } ) } );
   EXPECT_EQ( fan( "1", "100" )->setRpm( -500 ), PL_STATUS_OK );
   EXPECT_TRUE( TestHost::traced( 6, "Setting fan 0 duty cycle to 65036" ) ); // -500
}

TEST_F( PmbusTest, ADutyIsCutToSixteenBitsBeforeItIsLimited ) {
   ham.expectBatch( { write16( 0x3B ).carries( { 1, 0 } ) } );
   EXPECT_EQ( fan( "1", "100" )->setRpm( 65537 ), PL_STATUS_OK );
   EXPECT_TRUE( TestHost::traced( 6, "Setting fan 0 duty cycle to 1" ) );
}

TEST_F( PmbusTest, PacketErrorCheckingIsOffByDefault ) {
   std::unique_ptr<Component::LogicalDevice::Fan> plain(
      pmbus.newFan( withArgs( { { "fanId", "1" }, { "maxFanRpm", "100" } } ) ) );
   ham.expectBatch( { write16( 0x3B ).carries( { 50, 0 } ) } );
   EXPECT_EQ( plain->setRpm( 50 ), PL_STATUS_OK );
}

TEST_F( PmbusTest, OnlyTheTextTrueTurnsPacketErrorCheckingOn ) {
   ham.expectBatch( { write16( 0x3B ).carries( { 50, 0 } ).withPec() } );
   EXPECT_EQ( fan( "1", "100", "true" )->setRpm( 50 ), PL_STATUS_OK );
   ham.expectBatch( { write16( 0x3B ).carries( { 50, 0 } ) } );
   EXPECT_EQ( fan( "1", "100", "True" )->setRpm( 50 ), PL_STATUS_OK );
}

TEST_F( PmbusTest, AFailedFanCommandIsTracedWithItsDuty ) {
   ham.expectBatch( { write16( 0x3C ).carries( { 100, 0 } ).fails( 6 ) } );
   EXPECT_EQ( fan( "2", "100" )->setRpm( 250 ), 6 );
   EXPECT_TRUE( TestHost::traced( 0, "Failed to set fan1 duty cycle to 100" ) );
   TestHost::traces.clear();
   ham.expectBatch( { write16( 0x3C ).carries( { 50, 0 } ) } );
   EXPECT_EQ( fan( "2", "100" )->setRpm( 50 ), PL_STATUS_OK );
   EXPECT_FALSE( TestHost::traced( 0, "Failed to set fan1 duty cycle to 50" ) );
}

TEST_F( PmbusTest, EachSensorHasItsCommand ) {
   Pmbus::TempSensor first( &pmbus, 1 ), second( &pmbus, 2 );
   EXPECT_EQ( first.id(), 1 );
   EXPECT_EQ( second.reg(), 0x8E );
   ham.expectBatch( { read16( 0x8D ).answers( { 0x4F, 0xF8 } ) } );
   EXPECT_EQ( first.getTemperature( &value ), PL_STATUS_OK );
   EXPECT_EQ( value, 39.5f );
   ham.expectBatch( { read16( 0x8E ).answers( { 0x21, 0x00 } ) } );
   EXPECT_EQ( second.getTemperature( &value ), PL_STATUS_OK );
   EXPECT_EQ( value, 33.0f );
}

TEST_F( PmbusTest, ATemperatureBelowZeroBecomesZeroEvenAfterAFailedRead ) {
   Pmbus::TempSensor sensor( &pmbus, 1 );
   ham.expectBatch( { read16( 0x8D ).answers( { 0xFB, 0x07 } ) } ); // -5
   EXPECT_EQ( sensor.getTemperature( &value ), PL_STATUS_OK );
   EXPECT_EQ( value, 0.0f );
   value = -7.0f;
   ham.expectBatch( { read16( 0x8D ).fails( 6 ) } );
   EXPECT_EQ( sensor.getTemperature( &value ), 6 );
   EXPECT_EQ( value, 0.0f );
   value = 21.0f;
   ham.expectBatch( { read16( 0x8D ).fails( 6 ) } );
   EXPECT_EQ( sensor.getTemperature( &value ), 6 );
   EXPECT_EQ( value, 21.0f );
}

TEST_F( PmbusTest, MissingArgumentsAndIdsOutOfRangeStopTheProcess ) {
   EXPECT_DEATH( pmbus.newFan( withArgs( { { "maxFanRpm", "1" } } ) ),
                 ::testing::HasSubstr( R"(args.driverArgs.find( "fanId" ) != )" ) );
   EXPECT_DEATH( pmbus.newFan( withArgs( { { "fanId", "1" } } ) ),
                 ::testing::HasSubstr( R"(args.driverArgs.find( "maxFanRpm" ) != )" ) );
   EXPECT_DEATH( fan( "3", "100" ), "Assertion `fanId == 1 \\|\\| fanId == 2' failed" );
   EXPECT_DEATH( pmbus.newTempSensor( withArgs( {} ) ),
                 ::testing::HasSubstr( R"(args.driverArgs.find( "sensorId" ) != )" ) );
   EXPECT_DEATH( pmbus.newTempSensor( withArgs( { { "sensorId", "0" } } ) ),
                 "Assertion `id == 1 \\|\\| id == 2' failed" );
   EXPECT_THROW( fan( "one", "100" ), std::invalid_argument );
}

TEST_F( PmbusTest, EveryObjectIsTraced ) {
   Drivers::DriverArgs none;
   std::unique_ptr<Component::HardwareDevice> device( Pmbus::create( none, nullptr ) );
   delete static_cast<Pmbus::Psu *>( pmbus.newPsu( none ) );
   fan( "1", "1" );
   delete pmbus.newTempSensor( withArgs( { { "sensorId", "1" } } ) );
   EXPECT_EQ( TestHost::tracedAt( 0 ),
              ( std::vector<std::string>{ "Creating Pmbus Device", "Creating Pmbus Psu Device",
                                          "Creating Pmbus Fan Device",
                                          "Creating Pmbus TempSensor Device" } ) );
}

} // namespace
