#pragma once

#include "smbusd/server/Dispatcher.h"

#include <boost/asio/local/stream_protocol.hpp>

#include <array>
#include <functional>
#include <memory>
#include <string>

namespace Smbusd {

// One client's connection: takes a frame, has it carried out, answers, takes the next. A frame
// that holds no transaction is answered with a failure; one whose end can't be known ends the
// connection after the answer.
class Session : public std::enable_shared_from_this<Session> {
 public:
   using Socket = boost::asio::local::stream_protocol::socket;
   using Ended = std::function<void( const std::shared_ptr<Session> & )>;

   // With a refusal, its first frame gets that for an answer, and the connection ends.
   Session( Socket socket, Dispatcher &dispatcher, std::string refusal, Ended ended );

   void start();
   // Ends the connection; the transaction in hand is carried out all the same.
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
   std::string received_; // and not taken yet
   std::string sending_;
};

} // namespace Smbusd
