// The client's sub-commands. They print what they find, and throw Failed, Unreachable, or CLI11's
// ValidationError for values that make no sense together.
#pragma once

#include "orbis-smbus/CommandLine.h"

namespace SmbusClient {

// Without a register it receives a byte.
void read( const Options & );
// Without values it sends the register as a byte.
void write( const Options & );
// Fails only when not one register can be read.
void dump( const Options & );
// Asks every address for a byte: the one question that leaves most chips as they are.
void scan( const Options & );

// On the bench's side of a simulated board. They throw NoCommand for words that are none, too.
void sim( const Options & );
// Until the server ends; or what a recording holds, and throws RecordingError where that ends.
void trace( const Options & );

} // namespace SmbusClient
