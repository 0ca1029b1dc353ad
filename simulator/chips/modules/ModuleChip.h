#pragma once

#include "simulator/chips/Chip.h"
#include "simulator/chips/Pluggable.h"
#include "simulator/chips/modules/HeldClock.h"
#include "simulator/chips/modules/LaggingSwitch.h"
#include "simulator/chips/modules/ModuleModel.h"

#include <array>

namespace Simulator {

// What all pluggable modules have in common on the bus: a pointer that goes on with each byte,
// monitors, flags that follow from them, and light that comes from a module at the other end.
class ModuleChip : public Chip, public Pluggable {
 public:
   using Time = Bus::Clock::Time;

   // It has been running for hours. The clock outlives it.
   ModuleChip( std::string name, const Bus::Clock &, const Optics &, uint64_t seed );

   ModuleModel &model() { return model_; }
   // A fibre. Both modules outlive what is done with either.
   static void join( ModuleChip &, ModuleChip &, double lossDecibels );
   // Whether there are pages to choose from, and flags that stay set.
   virtual bool hasPages() const { return false; }

   // What leaves the connector, in milliwatts.
   double light( unsigned lane ) const;
   double rxPower( unsigned lane ) const;
   double bias( unsigned lane ) const { return laser( lane, model_.celsius() ).bias; }
   double txPower( unsigned lane ) const { return laser( lane, model_.celsius() ).power; }

   void ordersAre( const Orders & ) final;
   Signals signals() final;

   void reset() final;
   void powerLost() final { model_.powerLost(); }
   std::vector<Quantity> quantities() final;
   bool addressed( Direction ) final;
   bool addressedAt( uint8_t address, Direction ) final;
   bool command( uint32_t address ) final;
   bool write( uint8_t ) final;
   uint8_t read() final;

 protected:
   // The monitors' words, all of one moment.
   struct Sample {
      uint16_t celsius = 0;
      uint16_t volts = 0;
      std::array<uint16_t, ModuleModel::mostLanes> bias{};
      std::array<uint16_t, ModuleModel::mostLanes> txPower{};
      std::array<uint16_t, ModuleModel::mostLanes> rxPower{};
   };

   // The module begins anew: its settings are those after power-on.
   virtual void restarted() = 0;
   // Sets the flags of what is true now. Between two changes everything moves one way only, so that
   // it is enough to do so before and after a change.
   virtual void latch( const Sample & ) {}
   virtual void ordersHaveChanged() = 0;
   virtual bool acknowledges( Time running ) const = 0;
   virtual bool emits( unsigned lane ) const = 0;
   virtual bool raisesInterrupt() { return false; }
   virtual bool losesSignal() const { return false; }
   virtual bool isFaulty() const { return false; }
   virtual uint8_t at( uint8_t address ) = 0;
   virtual void store( uint8_t address, uint8_t byte ) = 0;
   virtual bool choosesPage( uint8_t ) const { return false; }
   virtual bool isChecksum( uint8_t ) const { return false; }
   virtual unsigned biasScale() const { return 1; } // steps of 2 uA

   const Optics &optics() const { return model_.optics(); }
   const Orders &orders() const { return orders_; }
   Time now() const { return clock_.now(); }
   Time startedAt() const { return start_; }
   // Which of its addresses the transfer is for: 0 for 0x50, 1 for 0x51.
   unsigned device() const { return device_; }
   Time running() const { return now() - start_; } // since power or the last reset
   void restart();
   // The same words all through a transfer.
   const Sample &sample();
   Sample freshSample() const;
   bool isDark( uint16_t rxPower ) const; // too dark to be a signal
   bool isDead( uint16_t txPower ) const; // for a laser that is on
   bool loses( unsigned lane ) const;     // its signal
   // The flags of the words that this transfer reads. A byte that it reads twice is still clear.
   void latchSample();
   // The page that a host gets when it has chosen this one, and what it reads as the choice.
   uint8_t shownPage( uint8_t chosen ) const;
   uint8_t toldPage( uint8_t chosen ) const { return faults().stuckPage.value_or( chosen ); }

 private:
   template <typename Change>
   void changing( Change );
   ModuleModel::Laser laser( unsigned lane, double celsius ) const;
   void latchNow();
   void latchBothEnds();
   void addLane( unsigned lane, std::vector<Quantity> & );

   mutable HeldClock clock_;
   ModuleModel model_;
   Orders orders_;
   Time start_;
   ModuleChip *far_ = nullptr;
   double fibreRatio_ = 1;
   unsigned device_ = 0;
   std::array<uint8_t, 2> pointers_{};
   bool sampled_ = false; // in this transfer
   bool latched_ = false; // in this transfer
   Sample sample_;
};

} // namespace Simulator
