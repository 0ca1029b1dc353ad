#pragma once

#include "smbusd/server/Dispatcher.h"

#include <boost/asio/local/stream_protocol.hpp>

#include <array>
#include <functional>
#include <memory>
#include <string>

namespace Smbusd {

// The connection of one client: receives a frame, dispatches it, sends the answer, then receives
// the next frame. A frame that is not a transaction gets a failure as its answer; if the length of
// the frame is not valid, the connection ends after that.
class Session : public std::enable_shared_from_this<Session> {
 public:
   using Socket = boost::asio::local::stream_protocol::socket;
   using Ended = std::function<void( const std::shared_ptr<Session> & )>;

   // With a refusal, the first frame gets that as its answer, and the connection ends.
   Session( Socket socket, Dispatcher &dispatcher, std::string refusal, Ended ended );

   void start();
   // Ends the connection. A running transaction is finished.
   void end();
   bool refused() const { return !refusal_.empty(); }

 private:
   void readMore();
   void handleFrame();
   void handleMessage( std::string_view message );
   void watchForDisconnect();
   void answer( const Smbus::TransactionResponse &, bool last = false );

   Socket socket_;
   Dispatcher &dispatcher_;
   const std::string refusal_;
   const Ended ended_;
   const std::shared_ptr<Client> client_ = std::make_shared<Client>();
   bool waiting_ = false; // for the dispatcher
   std::array<char, 16384> chunk_;
   std::string received_; // but not handled yet
   std::string sending_;
};

} // namespace Smbusd
