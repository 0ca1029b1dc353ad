#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Host {

// Collects the bytes that come over a socket, and cuts them into messages.
class FrameBuffer {
 public:
   void append( std::string_view bytes ) { bytes_ += bytes; }
   // The next whole message, without its length; nothing while there is none. Throws
   // std::runtime_error when the bytes don't start with a length, or the message is too long.
   std::optional<std::string> next();
   // Whether the bytes end with a part of a message.
   bool hasRest() const { return !bytes_.empty(); }

 private:
   std::string bytes_{};
};

} // namespace Host
