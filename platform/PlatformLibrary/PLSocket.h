// The client's end of the connection to the SMBus server.
#pragma once

#include "OrbisUtil/Smbus.pb.h"
#include "pl.h"

#include <chrono>

namespace PlatformLibrary {

class PLSocket {
 public:
   // The connected descriptor (-1: none) and its watcher. The destructor releases neither; the
   // owner closes them first.
   int fd = -1;
   pl_fd_watcher_handle watcher = nullptr;

   PLSocket();
   ~PLSocket();
   PLSocket( const PLSocket & ) = delete;
   PLSocket &operator=( const PLSocket & ) = delete;

   // Connects to the server at the Unix stream socket named by ORBIS_SMBUS_SOCKET, or
   // /run/orbis/smbus.sock when that is unset or empty. One attempt takes at most a second, also at
   // a server whose backlog is full. Returns 0, or a negative value with errno set.
   int setup();

   // Sends one transaction and waits for its answer. Both together take at most
   // ORBIS_SMBUS_TIMEOUT_MS milliseconds (10,000 when unset). On success returns 0 or more and sets
   // *response to a message that the caller deletes. On failure returns a negative value with errno
   // set: ETIMEDOUT when the time is over, EPROTO for a frame over 16 MiB, an incomplete frame, or
   // bytes that can't be parsed. After a failure it closes the connection, so that a late answer is
   // never mistaken for the answer to a later request. The next call connects again, once, before
   // it sends.
   int sendRequestWait( Smbus::TransactionRequest *request, Smbus::TransactionResponse **response );

 private:
   std::chrono::milliseconds receiveLimit_{ 0 }; // of the connected descriptor; 0: none
};

} // namespace PlatformLibrary
