#pragma once

#include "simulator/chips/ChipKind.h"
#include "simulator/chips/Eeprom24C02.h"

namespace Simulator {

// The product data of a field-replaceable unit.
struct FruProduct {
   std::string manufacturer;
   std::string name;
   std::string partNumber;
   std::string version;
   std::string serial;
   std::string assetTag;
};

// The common header and the product info area; the rest is erased (IPMI Platform Management FRU
// Information Storage Definition 1.0, chapters 8, 12 and 13). The format has no fields of one
// character, so these get a space at the end. Throws std::length_error when a field has more than
// 63 characters, or when the fields together don't fit.
EepromImage fruImage( const FruProduct & );

ChipKind fru24C02Kind();

} // namespace Simulator
