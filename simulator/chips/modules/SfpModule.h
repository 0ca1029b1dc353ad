#pragma once

#include "simulator/chips/ChipKind.h"
#include "simulator/chips/modules/ModuleChip.h"
#include "simulator/chips/modules/SfpImage.h"

namespace Simulator {

// SFP+ module (SFF-8472): serial ID at address 0x50, diagnostics at 0x51 where it has them. Its
// flags show what is true now.
class SfpModule final : public ModuleChip {
 public:
   SfpModule( std::string name, const Bus::Clock &, const SfpProduct &, const ModuleIdentity &,
              SfpCalibration::Kind, unsigned cableMetres, uint64_t seed );

 private:
   // Address A2h.
   enum Register : uint8_t {
      Monitors = 96,
      StatusControl = 110,
      AlarmFlags = 112,
      WarningFlags = 116,
      UserMemory = 128,
      VendorMemory = 248
   };
   void restarted() override;
   void ordersHaveChanged() override { txDisablePin_.told( orders().txDisable, now() ); }
   bool acknowledges( Time running ) const override;
   bool emits( unsigned lane ) const override;
   bool losesSignal() const override;
   bool isFaulty() const override;
   uint8_t at( uint8_t address ) override;
   void store( uint8_t address, uint8_t byte ) override;
   bool isChecksum( uint8_t address ) const override;

   bool hasDiagnostics() const { return optics().lanes > 0; }
   bool measures() const;
   uint16_t monitor( unsigned number ); // 0 to 4, as in the memory
   uint8_t status() const;
   unsigned flags( unsigned number ); // of a monitor
   uint8_t flagByte( uint8_t address );

   const SfpCalibration calibration_;
   const WholeMemory serialId_;
   WholeMemory diagnostics_;
   LaggingSwitch txDisablePin_;
   LaggingSwitch softTxDisable_;
   uint8_t softRateSelect_ = 0;
};

ChipKind sfpModuleKind();

} // namespace Simulator
