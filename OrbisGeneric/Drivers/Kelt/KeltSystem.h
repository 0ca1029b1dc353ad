// The whole switch: power cycle and power off. The cause of the last restart is not supported.
#pragma once

#include "OrbisGeneric/HostServices.h"

// Hosts call these through the table. They are also exported, with their C++ names.
ORBIS_EXPORT pl_status pl_system_poweroff( pl_system *system );
ORBIS_EXPORT pl_status pl_system_powercycle( pl_system *system );
ORBIS_EXPORT pl_status pl_system_get_reload_cause( pl_system *system, char ( *cause )[100],
                                                   long *time, char ( *description )[500] );

// Protected: the plug-in always uses its own table, also when the host has a symbol of this name.
extern __attribute__( ( visibility( "protected" ) ) ) const pl_system_ops ops;
