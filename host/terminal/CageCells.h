#pragma once

#include "host/terminal/Snapshot.h"
#include "screen/Sections.h"

#include <vector>

namespace Host {

// The cages, a cell each: presence, control lines that are on, the light that comes in, and a sign
// where the module tells of something. Below them stands what that is.
void addCages( Screen::Section &section, const Snapshot &snapshot, size_t columns );

// The LEDs, a cell each: the setting that was last made.
void addLeds( Screen::Section &section, const std::vector<const ObjectReport *> &leds,
              size_t columns );

} // namespace Host
