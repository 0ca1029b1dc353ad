#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Host {

// Collects bytes from a socket, and cuts them into messages.
class FrameBuffer {
 public:
   void append( std::string_view bytes ) { bytes_ += bytes; }
   // The next whole message, without its length. Nothing when more bytes are needed. Throws
   // std::runtime_error when the bytes don't start with a length, or the message is too long.
   std::optional<std::string> next();
   // Whether there are bytes left of an incomplete message.
   bool hasRest() const { return !bytes_.empty(); }

 private:
   std::string bytes_{};
};

} // namespace Host
