#pragma once

#include "OrbisUtil/Smbus.pb.h"
#include "PlatformLibrary/PLSocket.h"
#include "orbis-smbus/Target.h"

#include <stdexcept>
#include <string>

namespace SmbusClient {

// The server can't be asked.
struct Unreachable : std::runtime_error {
   using std::runtime_error::runtime_error;
};

// The server's words for what failed.
struct Failed : std::runtime_error {
   using std::runtime_error::runtime_error;
};

// Transactions with the server, each with the multiplexers on the way opened before and closed
// after.
class Conversation {
 public:
   explicit Conversation( unsigned retries ) : retries_( retries ) {}
   ~Conversation();
   Conversation( const Conversation & ) = delete;
   Conversation &operator=( const Conversation & ) = delete;

   // What one request to the target gave. Throws Unreachable or Failed.
   std::string ask( const Target &, Smbus::RequestType, uint32_t offset, uint32_t length,
                    const std::string &data = {} );

 private:
   const unsigned retries_;
   PlatformLibrary::PLSocket socket_;
};

} // namespace SmbusClient
