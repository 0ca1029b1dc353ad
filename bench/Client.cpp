#include "Client.h"

#include <cstdlib>
#include <memory>
#include <unistd.h>

Client::Client( const std::string &path, unsigned bus ) {
   setenv( "ORBIS_SMBUS_SOCKET", path.c_str(), 1 );
   if ( socket_.setup() != 0 )
      abort();
   Smbus::Request &request = *request_.add_request();
   request.set_addr( uint64_t{ 72 } << 32 | uint64_t{ bus } << 39 );
   request.set_pci( 0 );
   request.set_mastertype( Smbus::MASTER_I2C );
   request.set_type( Smbus::REQUEST_READ );
   request.set_length( 2 );
   request.set_pec( false );
}

Client::~Client() { close( socket_.fd ); }

void Client::read() {
   Smbus::TransactionResponse *response = nullptr;
   const int result = socket_.sendRequestWait( &request_, &response );
   const std::unique_ptr<Smbus::TransactionResponse> owned( response );
   if ( result < 0 || response->failed() )
      abort();
}
