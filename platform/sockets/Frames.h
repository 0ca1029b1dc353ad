// Frames as bytes: a message's length as a varint, then the message.
#pragma once

#include <google/protobuf/message_lite.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace Sockets {

inline constexpr size_t maxFrameBytes = 16u << 20; // of a message, its length not counted

// The frame at the start of the bytes received so far.
struct Frame {
   enum class State { Incomplete, Whole, TooLong, NoLength };
   State state = State::Incomplete;
   std::string_view message = {}; // when whole
   size_t size = 0;               // of length and message together; 0 while the length isn't known
};
Frame firstFrame( std::string_view bytes );

// The message with its length before it.
std::string framed( const google::protobuf::MessageLite & );

} // namespace Sockets
