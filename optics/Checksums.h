// All checksums of the three standards are the low byte of a sum.
#pragma once

#include "optics/Half.h"

namespace Optics {

struct ChecksumPlace {
   const char *name;
   unsigned first, last; // of the bytes that are added up
   unsigned place;       // of the checksum
   const char *covers;   // "the options, the serial number and the date"
};

// Nothing if not all of it was read. A finding if it is wrong.
void addChecksum( Module &module, const Half &half, const ChecksumPlace &place );

} // namespace Optics
