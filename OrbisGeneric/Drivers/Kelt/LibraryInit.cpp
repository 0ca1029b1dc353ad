#include "OrbisGeneric/LibraryInit.h"

#include "OrbisGeneric/Topology.h"
#include "PlatformLibrary/PLSocket.h"

#include <cerrno>
#include <ctime>
#include <unistd.h>

PlatformLibrary::PLSocket *_plSock = nullptr;

namespace {

// The socket's destructor does not release descriptor and watcher. close() is also called with -1.
void tearDownSocket() {
   if ( _plSock->watcher && pl_fd_watcher_delete )
      pl_fd_watcher_delete( _plSock->watcher );
   close( _plSock->fd );
   delete _plSock;
   _plSock = nullptr;
}

// A signal that the host handles does not end it.
void sleepASecond() {
   timespec end;
   clock_gettime( CLOCK_MONOTONIC, &end );
   ++end.tv_sec;
   while ( clock_nanosleep( CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr ) == EINTR ) {
   }
}

} // namespace

int orbisLibraryInit( const char *caller, const char *topologyJson, int retries ) {
   PL_TRACE( 0, "%s", caller );
   PL_TRACE( 5, "%s: json = %s", caller, topologyJson );
   if ( int status = plSockInit( caller, retries ) )
      return status;
   return Topology::loadTopology( topologyJson );
}

int plSockInit( const char *caller, int retries ) {
   if ( _plSock )
      return PL_STATUS_OK;
   _plSock = new PlatformLibrary::PLSocket;
   for ( int attempt = 0; attempt < retries; ++attempt ) {
      if ( _plSock->setup() == 0 )
         return PL_STATUS_OK;
      sleepASecond(); // after the last attempt too
   }
   PL_TRACE( 0, "%s: socket Setup failed!", caller );
   tearDownSocket();
   return PL_STATUS_SOCKET;
}
