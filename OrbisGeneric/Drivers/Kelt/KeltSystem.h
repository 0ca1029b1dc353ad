// The switch as a whole: power cycle and power off. Why it last restarted is not provided.
#pragma once

#include "OrbisGeneric/HostServices.h"

// Reached by hosts through the table, and exported under their C++ names.
ORBIS_EXPORT pl_status pl_system_poweroff( pl_system *system );
ORBIS_EXPORT pl_status pl_system_powercycle( pl_system *system );
ORBIS_EXPORT pl_status pl_system_get_reload_cause( pl_system *system, char ( *cause )[100],
                                                   long *time, char ( *description )[500] );

// Protected: a host's own symbol of this name doesn't take its place in here.
extern __attribute__( ( visibility( "protected" ) ) ) const pl_system_ops ops;
