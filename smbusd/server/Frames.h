// Frames as bytes: a message's length as a varint, then the message.
#pragma once

#include <google/protobuf/message_lite.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace Smbusd {

inline constexpr size_t maxFrameBytes = 16u << 20; // of a message, its length not counted

// What stands at the head of bytes received so far.
struct Frame {
   enum class State { Incomplete, Whole, TooLong, NoLength };
   State state = State::Incomplete;
   std::string_view message = {}; // when whole
   size_t size = 0;               // when whole: of length and message together
};
Frame firstFrame( std::string_view bytes );

std::string framed( const google::protobuf::MessageLite & );

} // namespace Smbusd
