// A server for PLSocket. The test's script handles each connection.
#pragma once

#include "OrbisUtil/Smbus.pb.h"

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace PlatformTest {

// One accepted connection, as a script sees it.
class Connection {
 public:
   explicit Connection( int fd ) : fd_( fd ) {}
   // Returns false when the client has disconnected.
   bool readRequest( Smbus::TransactionRequest &request ) const;
   void answer( const Smbus::TransactionResponse &response ) const;
   void send( const std::string &bytes ) const;
   void waitForClientToGo() const;

 private:
   int fd_;
};

// Runs the script for every connection, one after another; they are numbered from 0.
class ScriptedServer {
 public:
   using Script = std::function<void( const Connection &, unsigned number )>;
   ScriptedServer( const std::string &path, Script script, int backlog = 16 );
   ~ScriptedServer() { stop(); }
   // Ends the present connection, too, and waits for its script.
   void stop();
   // The number of connections so far, including the present one.
   unsigned connections() const { return connections_; }

 private:
   void serve( const Script &script );
   int listener_;
   std::mutex mutex_; // of the two below
   int connected_ = -1;
   bool stopped_ = false;
   std::atomic<unsigned> connections_ = 0;
   std::thread thread_;
};

// An answer with this number, to recognise it.
Smbus::TransactionResponse numbered( unsigned number );

} // namespace PlatformTest
