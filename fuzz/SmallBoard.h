// The board that several targets share, and a clock that stands still: the same input always does
// the same.
#pragma once

#include "smbus/Clock.h"

namespace Fuzz {

// From the project's root, in which every target runs.
constexpr const char *smallTopology = "fuzz/board/topology.json";
constexpr const char *smallSimulation = "fuzz/board/simulation.json";
constexpr const char *smallObjects = "fuzz/board/objects.json";

class NoTime final : public Bus::Clock {
 public:
   Time now() const override { return Time( 0 ); }
};

} // namespace Fuzz
