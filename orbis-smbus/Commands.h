// The sub-commands. They print their result, and throw Failed or Unreachable.
#pragma once

#include "orbis-smbus/CommandLine.h"

namespace SmbusClient {

// Without a register it receives a byte.
void read( const Options & );
// Without values it sends the register as a byte.
void write( const Options & );
// Fails only when no register at all can be read.
void dump( const Options & );
// Receives a byte from every address: of all transfers this one disturbs the fewest chips.
void scan( const Options & );

// Controls a simulated board.
void sim( const Options & );
// Runs until the server ends. Or prints what has passed. Or prints a recording, and throws
// RecordingError where that is damaged.
void trace( const Options & );
// Runs until the server ends, or for as many tables as were asked for.
void top( const Options & );

} // namespace SmbusClient
