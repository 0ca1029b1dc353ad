#pragma once

#include "simulator/chips/modules/Fields.h"
#include "simulator/chips/modules/SfpCalibration.h"

#include <string_view>
#include <vector>

namespace Simulator {

// A kind of SFP+: its optics, and what its serial ID says of them.
struct SfpProduct {
   std::string_view media;
   Optics optics{}; // no lanes: it has no diagnostics
   uint8_t connector = 0;
   struct {
      uint8_t at = 3;
      uint8_t bits = 0;
   } compliance{};
   uint8_t extendedCompliance = 0;
   uint8_t kilometres = 0; // of single-mode fibre
   uint8_t om1 = 0;        // multimode fibre, in 10 m
   uint8_t om2 = 0;
   uint8_t om3 = 0;
   uint8_t om4 = 0;
   unsigned wavelength = 0; // nm
};
const std::vector<SfpProduct> &sfpProducts();

// Address A0h (SFF-8472). Throws std::length_error for a text that is longer than its field.
WholeMemory sfpSerialId( const SfpProduct &, const ModuleIdentity &, SfpCalibration::Kind,
                         unsigned cableMetres );

// Thresholds and calibration of address A2h; its monitors are zero.
WholeMemory sfpDiagnostics( const SfpProduct &, const SfpCalibration & );

} // namespace Simulator
