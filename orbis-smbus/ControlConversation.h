#pragma once

#include "smbus/Control.pb.h"

#include <string>

namespace SmbusClient {

// Requests to the bench's side of a simulated board, one connection for all.
class ControlConversation {
 public:
   // Throws Unreachable.
   explicit ControlConversation( const std::string &path );
   ~ControlConversation();
   ControlConversation( const ControlConversation & ) = delete;
   ControlConversation &operator=( const ControlConversation & ) = delete;

   // Throws Failed with the server's words for what can't be done, or Unreachable.
   SmbusControl::Response ask( const SmbusControl::Request & );
   // The next response, however long it takes. Throws Unreachable.
   SmbusControl::Response receive();

 private:
   int fd_;
   std::string received_;
};

} // namespace SmbusClient
