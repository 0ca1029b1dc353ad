#pragma once

#include "boardfiles/SimulationFile.h"
#include "simulator/chips/ChipKind.h"

#include <memory>
#include <string>
#include <vector>

namespace Simulator {

// All kinds of chip that a board can have, in the order of the schema.
const std::vector<ChipKind> &chipKinds();

// A chip as its entry describes it. Throws BoardError for a kind that isn't known, and for texts
// that the chip has no room for.
std::unique_ptr<Chip> makeChip( const BoardFiles::SimulatedChip &, const Surroundings & );

// boards/simulation.schema.json, made of the chips' descriptions.
std::string simulationSchemaText();

} // namespace Simulator
