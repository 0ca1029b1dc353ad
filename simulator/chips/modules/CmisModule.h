#pragma once

#include "simulator/chips/ChipKind.h"
#include "simulator/chips/modules/CmisImage.h"
#include "simulator/chips/modules/CmisStates.h"
#include "simulator/chips/modules/ModuleChip.h"

namespace Simulator {

// QSFP-DD module (CMIS 5.2). Optical ones have pages 00h, 01h, 02h, and in bank 0 pages 10h and
// 11h; copper cables have page 00h alone. Flags stay set until their byte is read, and are set
// again while the reason for them is there.
class CmisModule final : public ModuleChip {
 public:
   CmisModule( std::string name, const Bus::Clock &, const CmisProduct &, const ModuleIdentity &,
               unsigned cableMetres, uint64_t seed );

   bool hasPages() const override { return optics().lanes > 0; }

 private:
   enum Page : uint8_t {
      Identification = 0x00,
      Advertising = 0x01,
      Thresholds = 0x02,
      LaneControl = 0x10,
      LaneStatus = 0x11
   };
   // Lower memory.
   enum Register : uint8_t {
      State = 3,
      Summary = 4,
      ModuleFlags = 8,
      MonitorFlags = 9,
      ModuleFlagsEnd = 14,
      Temperature = 14,
      Supply = 16,
      MonitorsEnd = 18,
      Control = 26,
      Masks = 31, // of the flags from byte 8 on
      MasksEnd = 37,
      BankSelect = 126,
      PageSelect = 127
   };
   // Page 10h.
   enum LaneControls : uint8_t {
      Deinit = 128,
      TxDisable = 130,
      ApplyInit = 143,
      ApplyNow = 144,
      Staged = 145,
      LaneMasks = 213, // of the flags from byte 134 of page 11h on
      LaneControlsEnd = 233
   };
   // Page 11h. A group of limit flags has a byte each for high alarm, low alarm, high and low
   // warning.
   enum LaneStates : uint8_t {
      States = 128,
      RxValid = 132,
      TxValid = 133,
      LaneFlags = 134,
      TxFailure = 135,
      TxPowerFlags = 139,
      BiasFlags = 143,
      RxLos = 147,
      RxLossOfLock = 148,
      RxPowerFlags = 149,
      LaneFlagsEnd = 154,
      TxPower = 154,
      Bias = 170,
      RxPower = 186,
      LaneMonitorsEnd = 202,
      ConfigStatus = 202,
      ActiveSet = 206,
      ActiveSetEnd = 214
   };

   void restarted() override;
   void latch( const Sample & ) override;
   void ordersHaveChanged() override { updateWishes(); }
   bool acknowledges( Time running ) const override { return running >= CmisStates::management; }
   bool emits( unsigned lane ) const override;
   bool raisesInterrupt() override;
   uint8_t at( uint8_t address ) override;
   void store( uint8_t address, uint8_t byte ) override;
   bool choosesPage( uint8_t address ) const override {
      return address == BankSelect || address == PageSelect;
   }
   bool isChecksum( uint8_t address ) const override;
   unsigned biasScale() const override { return product_.biasScale; }

   void updateWishes();
   bool isManaged() const { return !orders().reset && acknowledges( running() ); }
   void latchLane( unsigned lane, const Sample & );
   void latchLimits( unsigned at, unsigned lane, unsigned flags );
   bool hasLaneFlags() const; // that aren't masked
   uint8_t lower( uint8_t address );
   uint8_t upper( uint8_t address );
   uint8_t laneStatus( uint8_t address );
   uint8_t laneMonitor( uint8_t address );
   void storeLower( uint8_t address, uint8_t byte );
   void storeControl( uint8_t byte );
   void storeLaneControl( uint8_t address, uint8_t byte );
   void applyStaged( uint8_t lanes );
   void choosePage( uint8_t page );

   const CmisProduct product_;
   const UpperPage identification_;
   const UpperPage advertising_;
   const UpperPage thresholds_;
   LowerMemory lower_; // flags and controls, too
   UpperPage laneControl_;
   UpperPage laneStatus_;
   uint8_t bank_ = 0;
   uint8_t page_ = 0;
   mutable CmisStates states_; // who asks moves them on to the present
};

ChipKind cmisModuleKind();

} // namespace Simulator
