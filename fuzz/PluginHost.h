// The plug-in in this process, with a host and an SMBus server around it that do next to nothing.
#pragma once

#include "boardfiles/ObjectsFile.h"
#include "boardfiles/TopologyFile.h"

namespace Fuzz {

// Whether the host's check accepts these files by the table of the Kelt plug-in. The findings are
// those of their readers.
bool accepts( const BoardFiles::TopologyFile &topology, const BoardFiles::ObjectsFile &objects,
              BoardFiles::Findings findings );

// Loads the topology and adds every object, in the order of the file, to a plug-in that knows
// nothing yet. An assertion of the plug-in ends this process.
void addAll( const BoardFiles::TopologyFile &topology, const BoardFiles::ObjectsFile &objects );

} // namespace Fuzz
