#pragma once

#include "simulator/chips/ChipKind.h"
#include "simulator/chips/Drift.h"

#include <array>

namespace Simulator {

// LM75 thermometer. Words have nine bits, two's complement, 0.5 degrees Celsius each, in the top
// bits of two bytes, high byte first (TI LM75B and NXP LM75A datasheets, "Temperature data format"
// and "Pointer register"). There is no packet error code: bytes after those of the register are
// acknowledged and ignored.
class LM75 final : public Chip {
 public:
   LM75( std::string name, const Bus::Clock &clock );

   // The controls: the air temperature, and the thresholds in the chip.
   void temperatureIs( double celsius, const Drift &drift = {} );
   double tOs() const { return celsius( words_[TOs] ); }
   double tHyst() const { return celsius( words_[THyst] ); }

   void reset() override;
   std::vector<Quantity> quantities() override;
   bool addressed( Direction ) override;
   bool command( uint32_t ) override;
   bool write( uint8_t ) override;
   uint8_t read() override;

 private:
   enum Register : uint8_t { Temp = 0, Configuration = 1, THyst = 2, TOs = 3 };

   static uint16_t word( double celsius );
   static double celsius( uint16_t word );
   void convert(); // measures the temperature, except in shutdown

   const Bus::Clock &clock_;
   double celsius_ = 25;
   Drift drift_;
   uint8_t pointer_ = Temp; // three bits
   uint8_t configuration_ = 0;
   std::array<uint16_t, 4> words_{}; // the entry of Configuration is unused
   unsigned position_ = 0;           // bytes of this read or write so far
   uint8_t firstByte_ = 0;           // of the word that is being written
   uint8_t lastRead_ = 0;
};

ChipKind lm75Kind();

} // namespace Simulator
