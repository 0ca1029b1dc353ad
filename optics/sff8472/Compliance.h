// What single bits of A0h stand for.
#pragma once

#include "optics/Names.h"

namespace Optics::Sff8472 {

std::span<const NamedBit> complianceBits(); // bytes 3 to 10
std::span<const NamedBit> optionBits();     // bytes 64, 65 and 93
// Bytes 60 and 61, which hold a wavelength in other modules.
std::span<const NamedBit> passiveCableBits();
std::span<const NamedBit> activeCableBits();
Code rateIdentifierCode( uint8_t number ); // byte 13

} // namespace Optics::Sff8472
