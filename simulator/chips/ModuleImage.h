#pragma once

#include "simulator/chips/ChipKind.h"
#include "simulator/chips/Eeprom24C02.h"

namespace Simulator {

// What a pluggable transceiver says of itself.
struct ModuleIdentity {
   std::string vendor; // 16 characters at most, as the part number and the serial
   std::string partNumber;
   std::string revision; // 4 for an SFP, 2 for a QSFP
   std::string serial;
   std::string date; // YYMMDD
};

// The serial id of a 10GBASE-SR module, as it reads at address 0x50 (SFF-8472, "Address A0h").
// Both throw std::length_error for a text that is longer than its field.
EepromImage sfpImage( const ModuleIdentity & );

// Lower page and upper page 00h of a 40GBASE-SR4 QSFP+ module without other pages (SFF-8636).
EepromImage qsfpImage( const ModuleIdentity & );

ChipKind sfpModuleKind();
ChipKind qsfpModuleKind();

} // namespace Simulator
