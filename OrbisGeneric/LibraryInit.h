// Initialisation of the plug-in: one socket to the SMBus server, one topology.
#pragma once

#include "OrbisGeneric/HostServices.h"

namespace PlatformLibrary {
class PLSocket;
}

// The only connection to the SMBus server. Null until it is set up, and never freed after that.
extern PlatformLibrary::PLSocket *_plSock;

// Connects and loads the topology. Every pl_<type>_init calls it; they may run in any order and
// more than once. caller is the name for the trace lines. Returns 0; 4 when the socket can't be set
// up (the topology is then not read); or the status of Topology::loadTopology.
ORBIS_EXPORT int orbisLibraryInit( const char *caller, const char *topologyJson, int retries );

// Connects, unless the socket is already connected. Makes `retries` attempts, one per second; none
// when `retries` is 0 or less. Returns 0 or 4.
ORBIS_EXPORT int plSockInit( const char *caller, int retries );

// The attempts to connect that a pl_<type>_init makes.
constexpr int connectionAttempts = 30;
