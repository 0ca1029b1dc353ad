#pragma once

#include "board/JsonFile.h"

#include <string_view>

namespace Smbusd {

// boards/simulation.schema.json, as it was when the program was built.
extern const std::string_view simulationSchema;

// Throws BoardError where the file isn't as the schema has it. What is wrong inside a chip's entry
// is told by the rules of its own kind of chip.
void checkSimulation( const JsonFile & );

} // namespace Smbusd
