#pragma once

#include "OrbisUtil/Smbus.pb.h"

#include <optional>
#include <string>

namespace TestSupport {

// A client that can send any bytes. Waits at most five seconds.
class RawClient {
 public:
   explicit RawClient( const std::string &path );
   ~RawClient() { leave(); }
   RawClient( const RawClient & ) = delete;
   RawClient &operator=( const RawClient & ) = delete;

   void send( const std::string &bytes );
   void send( const Smbus::TransactionRequest & );
   // Nothing: the connection has ended.
   std::optional<std::string> receiveMessage();
   std::optional<Smbus::TransactionResponse> receive();
   Smbus::TransactionResponse ask( const Smbus::TransactionRequest & );
   void leave();

 private:
   int fd_;
};

} // namespace TestSupport
