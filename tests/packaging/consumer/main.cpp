// A program of somebody else's that asks a server which isn't there.
#include <PlatformLibrary/PLSocket.h>
#include <cstdio>
#include <cstdlib>
#include <pl.h>

int main() {
   setenv( "ORBIS_SMBUS_SOCKET", "/nonexistent", 1 );
   PlatformLibrary::PLSocket socket;
   const pl_status status = socket.setup() == 0 ? PL_STATUS_OK : PL_STATUS_SOCKET;
   Smbus::TransactionRequest request;
   request.add_request()->set_length( 1 );
   std::printf( "%s: %d\n", request.request_size() == 1 ? "no server" : "no message", status );
}
