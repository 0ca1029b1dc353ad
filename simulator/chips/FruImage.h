#pragma once

#include "simulator/chips/ChipKind.h"
#include "simulator/chips/Eeprom24C02.h"

namespace Simulator {

// What a field-replaceable unit says of itself.
struct FruProduct {
   std::string manufacturer;
   std::string name;
   std::string partNumber;
   std::string version;
   std::string serial;
   std::string assetTag;
};

// A memory that holds the product's info area behind the common header, the rest erased (IPMI
// Platform Management FRU Information Storage Definition 1.0, chapters 8, 12 and 13). A field of
// one character, which the format has no room for, gets a blank behind it. Throws std::length_error
// when a field has over 63 characters or all of them don't fit.
EepromImage fruImage( const FruProduct & );

ChipKind fru24C02Kind();

} // namespace Simulator
