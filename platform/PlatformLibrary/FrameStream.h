// Frames on a connected stream socket. No wait is longer than the deadline. A frame that fits into
// smallFrame costs one system call and no memory.
#pragma once

#include "PlatformLibrary/Deadline.h"

#include <google/protobuf/message_lite.h>

namespace PlatformLibrary {

constexpr size_t smallFrame = 4096;

// The first look of receiveFrame at the socket.
enum class FirstLook {
   Waits, // the socket's own receive timeout bounds it; it must not be later than the deadline
   Polls
};

// All return 0 or an errno value. After a failure the connection can't be used any more.
// waited: the server did not take the frame at once, so that some of the time is over.
int sendFrame( int fd, const google::protobuf::MessageLite &message, const Deadline &deadline,
               bool &waited );

// ECONNRESET when the peer disconnects before the first byte. EPROTO when it disconnects in the
// middle of a frame, or when the frame is over 16 MiB or can't be parsed. If more bytes follow the
// frame, the frame is valid, but the connection is shut down.
int receiveFrame( int fd, google::protobuf::MessageLite &message, const Deadline &deadline,
                  FirstLook firstLook );

} // namespace PlatformLibrary
