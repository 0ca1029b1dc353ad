#include "orbis-smbus/ServerConnection.h"

#include "smbus/Requests.h"
#include "sockets/SocketFile.h"
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

ServerConnection::ServerConnection( unsigned retries, Use use ) : retries_( retries ) {
   const std::string full = serverPath(), onlyReads = full + ".read";
   if ( use == Use::Reads && Sockets::tryToConnect( full ) == EACCES &&
        Sockets::tryToConnect( onlyReads ) == 0 )
      setenv( "ORBIS_SMBUS_SOCKET", onlyReads.c_str(), 1 ); // where the client library connects to
}

ServerConnection::~ServerConnection() {
   if ( socket_.fd >= 0 )
      close( socket_.fd );
}

std::string ServerConnection::ask( const Target &target, Smbus::RequestType type, uint32_t offset,
                                   uint32_t length, const std::string &data ) {
   Smbus::TransactionRequest transaction;
   transaction.set_retries( retries_ );
   Bus::open( transaction, target.bus, target.vias );
   Smbus::Request &request =
      Bus::addRequest( transaction, target.bus, target.address, type, offset, length );
   request.set_pec( target.pec );
   if ( !data.empty() )
      request.set_data( data );
   Bus::close( transaction, target.bus, target.vias );

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
