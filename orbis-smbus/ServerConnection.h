#pragma once

#include "OrbisUtil/Smbus.pb.h"
#include "PlatformLibrary/PLSocket.h"
#include "orbis-smbus/Failures.h"
#include "orbis-smbus/Target.h"

#include <string>

namespace SmbusClient {

// The path of the server's socket.
std::string serverPath();

// Sends transactions to the server. Each opens the target's multiplexers first and closes them at
// the end.
class ServerConnection {
 public:
   enum class Use { Reads, Writes };

   // What only reads takes the server's read-only socket when the other is not for this user.
   explicit ServerConnection( unsigned retries, Use use = Use::Writes );
   ~ServerConnection();
   ServerConnection( const ServerConnection & ) = delete;
   ServerConnection &operator=( const ServerConnection & ) = delete;

   // The data that one request to the target returns. Throws Unreachable or Failed.
   std::string ask( const Target &, Smbus::RequestType, uint32_t offset, uint32_t length,
                    const std::string &data = {} );

 private:
   const unsigned retries_;
   PlatformLibrary::PLSocket socket_;
};

} // namespace SmbusClient
