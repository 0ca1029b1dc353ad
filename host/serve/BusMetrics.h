#pragma once

#include "host/serve/BoardFamilies.h"
#include "host/serve/LastLoads.h"

namespace SmbusControl {
class Response;
} // namespace SmbusControl

namespace Host {

// What passed on each root bus since the start of the plug-in's server, as it has told so many
// seconds ago.
// Figures of a minute ago say nothing of now: only their age is told then.
void addBusses( const KnownLoads &known, BoardFamilies &to );

} // namespace Host
