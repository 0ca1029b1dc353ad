#pragma once

#include "simulator/chips/ChipKind.h"
#include "simulator/chips/Eeprom24C02.h"

namespace Simulator {

// The identification of a pluggable transceiver.
struct ModuleIdentity {
   std::string vendor; // at most 16 characters; part number and serial, too
   std::string partNumber;
   std::string revision; // 4 for an SFP, 2 for a QSFP
   std::string serial;
   std::string date; // YYMMDD
};

// The serial ID of a 10GBASE-SR module, at address 0x50 (SFF-8472, "Address A0h"). Both functions
// throw std::length_error for a text that is longer than its field.
EepromImage sfpImage( const ModuleIdentity & );

// Lower page and upper page 00h of a 40GBASE-SR4 QSFP+ module without other pages (SFF-8636).
EepromImage qsfpImage( const ModuleIdentity & );

ChipKind sfpModuleKind();
ChipKind qsfpModuleKind();

} // namespace Simulator
