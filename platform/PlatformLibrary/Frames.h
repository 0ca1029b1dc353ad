// Frames on a connected, non-blocking stream socket: a message's byte length as a varint, then the
// message. Every wait ends with the deadline.
#pragma once

#include "PlatformLibrary/Deadline.h"

#include <google/protobuf/message_lite.h>

#include <cstddef>

namespace PlatformLibrary {

constexpr size_t maxFrameBytes = 16u << 20;

// Both return 0 or an errno value. After a failure the connection is of no further use.
int sendFrame( int fd, const google::protobuf::MessageLite &message, const Deadline &deadline );

// ECONNRESET when the peer goes before the first byte; EPROTO when it goes in the middle of a
// frame, or when the frame is over maxFrameBytes or doesn't parse. Takes bytes behind the frame
// with it, and shuts the connection down then.
int receiveFrame( int fd, google::protobuf::MessageLite &message, const Deadline &deadline );

} // namespace PlatformLibrary
