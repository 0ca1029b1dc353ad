#pragma once

#include "simulator/chips/ChipKind.h"
#include "simulator/chips/Inertia.h"

#include <array>

namespace Simulator {

// EMC2305 controller of five fans, with the rotors that it drives (EMC2301/2/3/5 datasheet,
// "Register set", "Fan drive setting", "Tach reading"). The register address is incremented after
// each byte. There is no packet error code: if one is sent, it is written to the next register.
// Addresses without a register read zero and ignore writes.
class EMC2305 final : public Chip {
 public:
   static constexpr unsigned channels = 5;

   struct Rotor {
      std::string name;
      double maxRpm = 0;     // at full drive
      uint8_t bootDrive = 0; // what the board's boot code leaves in the setting register
   };

   // The first rotor is on the first channel, and so on. The clock outlives the chip.
   EMC2305( std::string name, const Bus::Clock &clock, std::vector<Rotor> rotors );

   // The controls.
   double rpm( unsigned channel ) const { return rotors_[channel].rpm.value(); }
   double driveShare( unsigned channel ) const; // of the PWM output, 0 to 1
   void stalledIs( unsigned channel, bool );    // a stalled rotor stops at once
   void seatedIs( unsigned channel, bool );     // so does the rotor of a pulled module

   void reset() override;
   void powerLost() override; // the rotors slow down
   std::vector<Quantity> quantities() override;
   bool command( uint32_t ) override;
   bool write( uint8_t ) override;
   uint8_t read() override;

 private:
   struct RotorState {
      Rotor rotor;
      Inertia rpm;
      bool stalled = false;
      bool seated = true;
   };

   void updateTarget( unsigned channel ); // sets the rotor's target speed
   unsigned count( unsigned channel ) const;
   double targetRpm( unsigned channel ) const;
   double rpmTimesCount( unsigned channel ) const;
   bool writable( uint8_t address ) const;
   uint8_t at( uint8_t address ) const;

   std::vector<RotorState> rotors_;
   std::array<uint8_t, 256> registers_{};
   uint8_t pointer_ = 0;
};

ChipKind emc2305Kind();

} // namespace Simulator
