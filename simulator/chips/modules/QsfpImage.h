#pragma once

#include "simulator/chips/modules/Fields.h"

#include <string_view>
#include <vector>

namespace Simulator {

// A kind of QSFP+ or QSFP28: its optics, and what its upper page 00h says of them.
struct QsfpProduct {
   std::string_view media;
   Optics optics{}; // no lanes: a copper cable, without monitors
   uint8_t identifier = 0x11;
   uint8_t connector = 0;
   uint8_t powerClass = 0;
   uint8_t compliance = 0;
   uint8_t extendedCompliance = 0;
   uint8_t laneRate = 0; // 100 MBd; 0xFF: in 250 MBd elsewhere
   uint8_t fastRate = 0; // 250 MBd
   uint8_t kilometres = 0;
   uint8_t om3 = 0; // in 2 m
   uint8_t om4 = 0; // in 2 m
   uint8_t technology = 0;
   unsigned wavelength = 0; // nm
   bool hasClockRecovery = false;
};
const std::vector<QsfpProduct> &qsfpProducts();

// Upper pages (SFF-8636). Throws std::length_error for a text that is longer than its field.
UpperPage qsfpIdentification( const QsfpProduct &, const ModuleIdentity &, unsigned cableMetres );
UpperPage qsfpThresholds( const QsfpProduct & ); // page 03h

} // namespace Simulator
