// The parts of a memory that a decoder uses: what is worth reading, and what is missing if it
// wasn't.
#pragma once

#include "optics/Image.h"
#include "optics/Module.h"

namespace Optics {

struct Part {
   enum class Kind : uint8_t { Identity, Live };
   Kind kind;
   Block block;
   const char *holds; // "the thresholds"
};

// Those that the module has, as far as the image tells.
std::vector<Part> partsOf( const Image &image, Standard standard );

// A sentence for each part that wasn't read, or not all of it.
std::vector<std::string> missingParts( const Image &image, Standard standard );

} // namespace Optics
