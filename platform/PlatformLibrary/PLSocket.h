// The client's end of the connection to the SMBus server.
#pragma once

#include "OrbisUtil/Smbus.pb.h"
#include "pl.h"

namespace PlatformLibrary {

class PLSocket {
 public:
   // The connected descriptor, -1 when there is none, and its watcher. The destructor releases
   // neither: whoever gives the socket up closes them first.
   int fd = -1;
   pl_fd_watcher_handle watcher = nullptr;

   PLSocket();
   ~PLSocket();
   PLSocket( const PLSocket & ) = delete;
   PLSocket &operator=( const PLSocket & ) = delete;

   // Connects to the server at the Unix stream socket named by ORBIS_SMBUS_SOCKET, or
   // /run/orbis/smbus.sock when that is unset or empty. Returns 0, or a negative value with errno
   // set.
   int setup();

   // Sends one transaction and waits for its answer, at most ORBIS_SMBUS_TIMEOUT_MS milliseconds
   // (10,000 when unset) for the whole of it. On success returns 0 or more and sets *response to a
   // message that the caller deletes. On failure returns a negative value with errno set: ETIMEDOUT
   // when the time is up, EPROTO for a frame over 16 MiB, a torn one, or bytes that don't parse.
   // A connection that failed is closed, so that a late answer is never taken for that of a later
   // request; the next call connects afresh, once, before it sends.
   int sendRequestWait( Smbus::TransactionRequest *request, Smbus::TransactionResponse **response );
};

} // namespace PlatformLibrary
