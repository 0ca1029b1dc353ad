#pragma once

#include "simulator/chips/Cpld.h"

namespace Simulator {

// The system CPLD. A 1 in bit 0 of register 0x102 takes the board's power away and gives it back;
// everything else is scratch.
class SystemCpld final : public Cpld {
 public:
   using Cpld::Cpld;

   // What a power cycle does; called at the end of the transfer that asks for it.
   void onPowerCycle( std::function<void()> action ) { action_ = std::move( action ); }

   void stopped() override {
      if ( std::exchange( asked_, false ) && action_ )
         action_();
   }

 private:
   void store( uint16_t address, uint8_t byte ) override {
      constexpr uint16_t powerCycle = 0x102;
      asked_ |= address == powerCycle && byte & 1;
      Cpld::store( address, byte );
   }

   bool asked_ = false;
   std::function<void()> action_;
};

} // namespace Simulator
