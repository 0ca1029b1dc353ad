// The expander of the fan board, initialised, with the arguments of a slot of fan 2.
#pragma once

#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/Drivers/Kelt/KeltPCA9506.h"
#include "support/PluginFixture.h"
#include "support/ScriptedHam.h"

class KeltPCA9506Fixture : public PluginFixture {
 protected:
   using Led = Component::LogicalDevice::Led;
   using Slot = Component::LogicalDevice::Slot;
   using Arguments = std::map<std::string, std::string>;

   KeltPCA9506Fixture() {
      expander.ham_ = &ham;
      ham.expectBatch( { write8( 0x18, 0xFF ), write8( 0x19, 0xFF ), write8( 0x1A, 0x7F ),
                         write8( 0x1B, 0x1B ), write8( 0x1C, 0x80 ) } );
      expander.init();
      Led::createBlinkTimer();
      slotArguments = { { "fanId", "2" },
                        { "presenceBitOffset", "1" },
                        { "fanFdl", "{modelName} {airflowDirection} {maxRpm}" },
                        { "rpmF2B", "23000" },
                        { "rpmB2F", "21000" },
                        { "modelName", "FAN-7" } };
   }
   ~KeltPCA9506Fixture() override { free( fdl ); }

   std::unique_ptr<Led> led( const char *id ) {
      Drivers::DriverArgs args;
      args.driverArgs = { { "id", id } };
      return std::unique_ptr<Led>( expander.newLed( args ) );
   }
   std::unique_ptr<Slot> slot() {
      Drivers::DriverArgs args;
      args.driverArgs = slotArguments;
      return std::unique_ptr<Slot>( expander.newSlot( args ) );
   }
   std::string present( Slot &s ) {
      TestHost::now += 3; // longer than the input cache is valid
      free( fdl );
      fdl = nullptr;
      status = s.getPresence( &fdl );
      return fdl ? fdl : "";
   }
   // Fan 2: presence is pin 11 (bank 1 bit 3), airflow pin 16 (bank 2 bit 0).
   void expectModule( bool frontToBack ) {
      ham.expectBatch( { read8( 0x01 ).answers( { 0xF7 } ) } );
      ham.expectBatch(
         { read8( 0x02 ).answers( { static_cast<uint8_t>( frontToBack ? 0x01 : 0xFE ) } ) } );
   }
   ScriptedHam ham;
   Drivers::KeltPCA9506 expander;
   Arguments slotArguments;
   char *fdl = nullptr;
   pl_status status = PL_STATUS_OK;
};
