#pragma once

#include "simulator/chips/modules/Fields.h"

#include <string_view>
#include <vector>

namespace Simulator {

// A kind of QSFP-DD: its optics, and what its memory says of them.
struct CmisProduct {
   struct Application {
      uint8_t host = 0; // interface IDs
      uint8_t media = 0;
      uint8_t laneCounts = 0; // of the host, and of the media
      uint8_t hostStarts = 0; // lane 1 has bit 0
      uint8_t mediaStarts = 0;
   };
   std::string_view media;
   Optics optics{}; // no lanes: a copper cable, without monitors
   uint8_t mediaType = 0;
   std::vector<Application> applications{};
   uint8_t powerClass = 0; // from 1 on
   double watts = 0;
   uint8_t connector = 0;
   uint8_t technology = 0;
   uint8_t singleModeLength = 0; // with its multiplier
   uint8_t om3 = 0;              // in 2 m
   uint8_t om4 = 0;              // in 2 m
   unsigned wavelength = 0;      // nm
   unsigned biasScale = 1;       // 1, 2 or 4 times 2 uA
};
const std::vector<CmisProduct> &cmisProducts();

// What never changes (CMIS 5.2). Throws std::length_error for a text that is longer than its field.
LowerMemory cmisLower( const CmisProduct & );
UpperPage cmisIdentification( const CmisProduct &, const ModuleIdentity &, unsigned cableMetres );
UpperPage cmisAdvertising( const CmisProduct & ); // page 01h
UpperPage cmisThresholds( const CmisProduct & );  // page 02h

} // namespace Simulator
