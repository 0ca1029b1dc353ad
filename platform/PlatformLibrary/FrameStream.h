// Frames on a connected, non-blocking stream socket. No wait is longer than the deadline.
#pragma once

#include "PlatformLibrary/Deadline.h"

#include <google/protobuf/message_lite.h>

namespace PlatformLibrary {

// Both return 0 or an errno value. After a failure the connection can't be used any more.
int sendFrame( int fd, const google::protobuf::MessageLite &message, const Deadline &deadline );

// ECONNRESET when the peer disconnects before the first byte. EPROTO when it disconnects in the
// middle of a frame, or when the frame is over 16 MiB or can't be parsed. If more bytes follow the
// frame, the frame is valid, but the connection is shut down.
int receiveFrame( int fd, google::protobuf::MessageLite &message, const Deadline &deadline );

} // namespace PlatformLibrary
