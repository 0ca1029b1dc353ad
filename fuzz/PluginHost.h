// The plug-in in this process, with a host and an SMBus server around it that do next to nothing.
#pragma once

#include "boardfiles/ObjectsFile.h"
#include "boardfiles/TopologyFile.h"

namespace Fuzz {

// What the host's check says of these files by the table of the Kelt plug-in; the texts are read
// from the paths. Nothing where there is an error.
struct CheckedBoard {
   std::unique_ptr<const BoardFiles::TopologyFile> topology{};
   BoardFiles::ObjectsFile objects{};
};
std::optional<CheckedBoard> checkBoard( const std::string &topology, const std::string &objects );

// Loads the topology and adds every object, in the order of the file, to a plug-in that knows
// nothing yet. An assertion of the plug-in ends this process.
void addAll( const CheckedBoard &board );

} // namespace Fuzz
