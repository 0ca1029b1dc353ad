#pragma once

#include "optics/Module.h"

namespace Optics {

// A byte in units of `metres`: 0 is none, 255 is more than 254 of them.
void addLength( Module &module, const char *medium, std::optional<uint8_t> units, double metres );

} // namespace Optics
