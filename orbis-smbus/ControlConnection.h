#pragma once

#include "smbus/Control.pb.h"

#include <string>

namespace SmbusClient {

// A connection to the control socket of a simulated board, for any number of requests.
class ControlConnection {
 public:
   // Throws Unreachable.
   explicit ControlConnection( const std::string &path );
   ~ControlConnection();
   ControlConnection( const ControlConnection & ) = delete;
   ControlConnection &operator=( const ControlConnection & ) = delete;

   // Throws Failed with the server's reason, or Unreachable.
   SmbusControl::Response ask( const SmbusControl::Request & );
   // The next response, however long it takes. Throws Unreachable.
   SmbusControl::Response receive();

 private:
   int fd_;
   std::string received_;
};

} // namespace SmbusClient
