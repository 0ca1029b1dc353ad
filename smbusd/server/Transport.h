// Bytes over a client's socket, none of which takes longer than it may.
#pragma once

#include <chrono>
#include <cstddef>
#include <string_view>

#include <sys/types.h>

namespace Smbusd {

using SocketClock = std::chrono::steady_clock;

// For poll(): at least a millisecond while there is time, so that it doesn't spin.
int millisecondsUntil( SocketClock::time_point end );

// False when the end comes before one of these events of poll().
bool waitFor( int socket, short events, SocketClock::time_point end );

// Waits for bytes. Returns their number; 0 or less: the connection has ended.
ssize_t receive( int socket, char *chunk, size_t size );

enum class Sent { All, Late, Ended };
// Late: the peer has not read enough within the limit.
Sent sendAll( int socket, std::string_view bytes, std::chrono::milliseconds limit );

// Throws away what comes, until the peer ends the connection or the time is over.
void discard( int socket, SocketClock::time_point end );

} // namespace Smbusd
