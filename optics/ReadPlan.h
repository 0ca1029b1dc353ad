// Which bytes of a module are worth reading, in which order. Only what the module says it has.
#pragma once

#include "optics/Image.h"
#include "optics/Module.h"

#include <vector>

namespace Optics {

// What doesn't change while the module is plugged, and isn't in the image yet: identity, what the
// module can do, thresholds, calibration. What is read first tells what else there is, so ask again
// with a fuller image until nothing is left.
std::vector<Block> identityBlocks( const Image &image );

// Monitors, flags and states: as few bytes and blocks as hold them. `image` has the identity.
std::vector<Block> liveBlocks( const Image &image );

} // namespace Optics
