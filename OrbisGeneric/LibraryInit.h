// Bringing the plug-in into working order: one socket to the SMBus server, one topology.
#pragma once

#include "OrbisGeneric/HostServices.h"

namespace PlatformLibrary {
class PLSocket;
}

// The process's one connection to the SMBus server; null until it is set up. Never freed after.
extern PlatformLibrary::PLSocket *_plSock;

// Connects and loads the topology; every pl_<type>_init ends here, in any order and any number of
// times. caller is named in trace lines. Returns 0, 4 when the socket can't be set up (the topology
// is then not looked at), or the status of Topology::loadTopology.
ORBIS_EXPORT int orbisLibraryInit( const char *caller, const char *topologyJson, int retries );

// Connects, unless that has been done. Makes `retries` attempts, a second apart; none at all when
// that is 0 or less. Returns 0 or 4.
ORBIS_EXPORT int plSockInit( const char *caller, int retries );

// How often a pl_<type>_init tries to connect.
constexpr int connectionAttempts = 30;
