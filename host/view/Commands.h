#ifndef ORBIS_HOST_VIEW_COMMANDS_H
#define ORBIS_HOST_VIEW_COMMANDS_H

#include "Board.h"
#include "State.h"
#include "view/CommandLine.h"

namespace Host {

/// Each carries one sub-command out and returns the program's exit code.
int show( const Board &board, const Options &options );
int watch( const Board &board, const Options &options );
int serve( const Board &board, const Options &options );
int act( const Board &board, const Options &options );

/// Says that the plug-in can't be loaded; the exit code for that.
int tellLoadFault( const Fault &fault );

} // namespace Host

#endif
