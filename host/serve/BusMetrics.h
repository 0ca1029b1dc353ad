#pragma once

#include "host/serve/BoardFamilies.h"

namespace SmbusControl {
class Response;
} // namespace SmbusControl

namespace Host {

// What passed on each root bus since the start of the plug-in's server, as it has told so many
// seconds ago.
void addBusses( const SmbusControl::Response &loads, double age, BoardFamilies &to );

} // namespace Host
