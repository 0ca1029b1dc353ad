#pragma once

#include "simulator/chips/ChipKind.h"
#include "simulator/chips/modules/ModuleChip.h"
#include "simulator/chips/modules/QsfpImage.h"

namespace Simulator {

// QSFP+ or QSFP28 module (SFF-8636). Optical ones have pages 00h, 02h and 03h; copper cables have
// page 00h alone. Flags stay set until their byte is read, and are set again while the reason for
// them is there.
class QsfpModule final : public ModuleChip {
 public:
   QsfpModule( std::string name, const Bus::Clock &, const QsfpProduct &, const ModuleIdentity &,
               unsigned cableMetres, uint64_t seed );

   bool hasPages() const override { return optics().lanes > 0; }

 private:
   // Lower page.
   enum Register : uint8_t {
      Identifier = 0,
      Revision = 1,
      Status = 2,
      Los = 3,
      TxFault = 4,
      LossOfLock = 5,
      TemperatureFlags = 6,
      SupplyFlags = 7,
      RxPowerFlags = 9,
      BiasFlags = 11,
      TxPowerFlags = 13,
      FlagsEnd = 15,
      Temperature = 22,
      Supply = 26,
      RxPower = 34,
      Bias = 42,
      TxPower = 50,
      MonitorsEnd = 58,
      FirstControl = 86,
      TxDisable = 86,
      Power = 93,
      ClockRecovery = 98,
      Masks = 100, // of the flags from byte 3 on
      MasksEnd = 105,
      PageSelect = 127
   };
   enum Page : uint8_t { Identification = 0, UserMemory = 2, Thresholds = 3 };

   void restarted() override;
   void latch( const Sample & ) override;
   void ordersHaveChanged() override { updatePower(); }
   bool acknowledges( Time running ) const override;
   bool emits( unsigned lane ) const override;
   bool raisesInterrupt() override;
   uint8_t at( uint8_t address ) override;
   void store( uint8_t address, uint8_t byte ) override;
   bool choosesPage( uint8_t address ) const override { return address == PageSelect; }
   bool isChecksum( uint8_t address ) const override;

   bool isReady() const;
   bool isUp() const; // ready, and not in low power
   void updatePower();
   void latchLanes( const Sample & );
   void latchNibble( unsigned address, unsigned lane, unsigned flags );
   uint8_t mask( unsigned address ) const; // of a flag byte
   uint8_t lower( uint8_t address );
   uint8_t upper( uint8_t address ) const;
   uint8_t monitorByte( uint8_t address );
   void storeLower( uint8_t address, uint8_t byte );
   void storeUpper( uint8_t address, uint8_t byte );
   bool has( uint8_t page ) const;

   const UpperPage identification_;
   UpperPage user_;
   const UpperPage thresholds_; // and what page 03h holds after power-on
   UpperPage controls_;         // page 03h from 224 on
   LowerMemory lower_;          // flags and controls
   uint8_t page_ = 0;
   bool isAnnounced_ = true; // the host has seen that the module is ready
   LaggingSwitch lowPower_;
   std::vector<LaggingSwitch> txDisable_;
};

ChipKind qsfpModuleKind();

} // namespace Simulator
