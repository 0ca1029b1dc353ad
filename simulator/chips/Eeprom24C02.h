#pragma once

#include "simulator/chips/Chip.h"

#include <array>

namespace Simulator {

using EepromImage = std::array<uint8_t, 256>;

// 24C02 memory of 256 bytes, write-protected by its pin: writes are acknowledged but not stored
// (Microchip 24LC02B datasheet, "Read operation", "Write protection"). Each read increments the
// address, and the last is followed by the first. A read without an address continues after the
// previous one.
class Eeprom24C02 final : public Chip {
 public:
   Eeprom24C02( std::string name, const EepromImage &image )
      : Chip( std::move( name ) ), image_( image ) {}

   void reset() override { pointer_ = 0; }
   bool command( uint32_t address ) override {
      pointer_ = static_cast<uint8_t>( address );
      return true;
   }
   bool write( uint8_t ) override { return true; }
   uint8_t read() override { return image_[pointer_++]; }

 private:
   const EepromImage image_;
   uint8_t pointer_ = 0;
};

} // namespace Simulator
