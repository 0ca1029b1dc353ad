#pragma once

#include "smbusd/server/Dispatcher.h"

#include <atomic>
#include <functional>
#include <string>
#include <string_view>
#include <thread>

namespace Smbusd {

// The connection of one client, with a thread of its own: receives a frame, has it carried out,
// sends the answer, then receives the next frame. A frame that is not a transaction gets a failure
// as its answer; if the length of the frame is not valid, the connection ends after that.
class Session {
 public:
   using Ended = std::function<void( Session & )>;

   // Owns the socket. With a refusal, the first frame gets that as its answer, and the connection
   // ends. `ended` is called at the end of the thread, in it.
   Session( int socket, Dispatcher &dispatcher, std::string refusal, Ended ended );
   // Ends the connection and waits for the thread.
   ~Session();
   Session( const Session & ) = delete;
   Session &operator=( const Session & ) = delete;

   // Ends the connection. A running transaction is finished.
   void end();
   bool refused() const { return !refusal_.empty(); }

 private:
   void serve();
   bool receiveMore();
   bool handleFrames( std::string_view &bytes );
   bool handleMessage( std::string_view message );
   bool answer( const Smbus::TransactionResponse & );

   const Peer peer_;
   Dispatcher &dispatcher_;
   const std::string refusal_;
   const Ended ended_;
   std::string received_;              // but not handled yet
   Smbus::TransactionRequest request_; // used again, so that its memory is, too
   std::thread thread_;
};

} // namespace Smbusd
