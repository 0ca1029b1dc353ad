// Frames on a connected, non-blocking stream socket. Every wait ends with the deadline.
#pragma once

#include "PlatformLibrary/Deadline.h"

#include <google/protobuf/message_lite.h>

namespace PlatformLibrary {

// Both return 0 or an errno value. After a failure the connection is of no further use.
int sendFrame( int fd, const google::protobuf::MessageLite &message, const Deadline &deadline );

// ECONNRESET when the peer goes before the first byte; EPROTO when it goes in the middle of a
// frame, or when the frame is over 16 MiB or doesn't parse. If bytes follow the frame, it takes
// them, too, and shuts the connection down.
int receiveFrame( int fd, google::protobuf::MessageLite &message, const Deadline &deadline );

} // namespace PlatformLibrary
