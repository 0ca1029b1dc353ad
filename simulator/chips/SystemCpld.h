#pragma once

#include "simulator/chips/ChipKind.h"
#include "simulator/chips/Cpld.h"

namespace Simulator {

// The system CPLD. Writing 1 to bit 0 of register 0x102 switches the board's power off and on. All
// other registers only store their value.
class SystemCpld final : public Cpld {
 public:
   using Cpld::Cpld;

   // The action for a power cycle; called at the end of the transfer that requests it.
   void onPowerCycle( std::function<void()> action ) { action_ = std::move( action ); }

   void stopped() override {
      if ( std::exchange( requested_, false ) && action_ )
         action_();
   }

 private:
   void store( uint16_t address, uint8_t byte ) override {
      constexpr uint16_t powerCycle = 0x102;
      requested_ |= address == powerCycle && byte & 1;
      Cpld::store( address, byte );
   }

   bool requested_ = false;
   std::function<void()> action_;
};

ChipKind systemCpldKind();

} // namespace Simulator
