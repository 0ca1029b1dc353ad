#include "orbis-smbus/ServerConnection.h"

#include "sockets/Unreachable.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>

namespace SmbusClient {

std::string serverPath() {
   const char *socket = std::getenv( "ORBIS_SMBUS_SOCKET" ); // main() sets it from --socket
   return socket && *socket ? socket : "/run/orbis/smbus.sock";
}

ServerConnection::~ServerConnection() {
   if ( socket_.fd >= 0 )
      close( socket_.fd );
}

std::string ServerConnection::ask( const Target &target, Smbus::RequestType type, uint32_t offset,
                                   uint32_t length, const std::string &data ) {
   Smbus::TransactionRequest transaction;
   transaction.set_retries( retries_ );
   target.open( transaction );
   Smbus::Request &request = target.addTo( transaction, type, offset, length );
   if ( !data.empty() )
      request.set_data( data );
   target.close( transaction );

   Smbus::TransactionResponse *received = nullptr;
   if ( socket_.sendRequestWait( &transaction, &received ) < 0 )
      throw Unreachable( "the server can't be reached: " +
                         Sockets::whyUnreachable( serverPath(), errno ) );
   const std::unique_ptr<Smbus::TransactionResponse> response( received );
   if ( response->failed() )
      throw Failed( response->has_error() ? response->error() : "unknown reason" );
   if ( response->response_size() != transaction.request_size() )
      throw Failed( "the server's answer is incomplete" );
   return response->response( static_cast<int>( target.vias.size() ) ).data();
}

} // namespace SmbusClient
