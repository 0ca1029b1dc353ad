// Frames as bytes: a message's length as a varint, then the message.
#pragma once

#include <google/protobuf/message_lite.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace Sockets {

inline constexpr size_t maxFrameBytes = 16u << 20; // of a message, without its length

// The frame at the start of the bytes that were received so far.
struct Frame {
   enum class State { Incomplete, Whole, TooLong, NoLength };
   State state = State::Incomplete;
   std::string_view message = {}; // when the state is Whole
   size_t size = 0;               // of length and message together; 0 while the length is unknown
};
Frame firstFrame( std::string_view bytes );

// The length of the message, then the message.
std::string framed( const google::protobuf::MessageLite & );

} // namespace Sockets
