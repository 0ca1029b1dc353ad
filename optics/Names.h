// Names for numbers and for bits.
#pragma once

#include "optics/Half.h"

namespace Optics {

struct NamedNumber {
   uint8_t number;
   const char *name;
};

// A number that isn't in the table is named as reserved, those from `firstOfVendor` on as the
// vendor's.
Code codeOf( uint8_t number, std::span<const NamedNumber> table, unsigned firstOfVendor = 0x100 );

struct NamedBit {
   unsigned byte, bit;
   const char *name;
};

// Of the bits that are set, in the order of the table.
void addNamesOfSetBits( std::vector<std::string> &names, const Half &half,
                        std::span<const NamedBit> table );

} // namespace Optics
