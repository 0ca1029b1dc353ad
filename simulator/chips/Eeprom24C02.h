#pragma once

#include "simulator/chips/Chip.h"

#include <array>

namespace Simulator {

using EepromImage = std::array<uint8_t, 256>;

// 24C02 memory of 256 bytes with its write-protect pin tied high: what is written is acknowledged
// and not kept (Microchip 24LC02B datasheet, "Read operation", "Write protection"). The address
// moves on behind each byte that is read, and from the last to the first; a read without an address
// goes on where the last ended.
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
