#pragma once

#include "boardfiles/JsonFile.h"

namespace BoardFiles {

// Throws BoardError where the file isn't as boards/simulation.schema.json has it. What is wrong
// inside a chip's entry is told by the rules of its own kind of chip.
void checkSimulation( const JsonFile & );

} // namespace BoardFiles
