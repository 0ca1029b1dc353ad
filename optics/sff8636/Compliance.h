// What single bits of page 00h stand for.
#pragma once

#include "optics/Names.h"

namespace Optics::Sff8636 {

std::span<const NamedBit> complianceBits(); // bytes 131 to 138
std::span<const NamedBit> optionBits();     // bytes 129, 147, 193 to 195 and 221

} // namespace Optics::Sff8636
