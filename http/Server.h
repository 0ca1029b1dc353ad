#pragma once

#include "http/Exchange.h"
#include "http/Guard.h"
#include "http/Listener.h"
#include "sockets/ControlGroup.h"

#include <boost/asio/basic_socket_acceptor.hpp>
#include <boost/asio/generic/stream_protocol.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <memory>

namespace Http {

// What the server allows to its clients.
struct Limits {
   uint64_t body = 64 * 1024;  // bytes; the answer to more is 413
   uint32_t header = 8 * 1024; // bytes; the answer to more is 431
   // At a time; the answer to one more is 503. A browser opens up to six connections, and each
   // page of it has one stream.
   size_t connections = 128;
   size_t streams = 64;                        // of them; the answer to one more is 503
   std::chrono::milliseconds idle{ 30'000 };   // a connection without a request is closed then
   std::chrono::milliseconds action{ 60'000 }; // a request without an answer gets 504 then
   // A stream that has nothing to tell gets a comment then: so both sides see that the other is
   // there.
   std::chrono::milliseconds comment{ 15'000 };
};

// Answers HTTP on a listening socket, on an event loop.
class Server {
 public:
   // What comes over TCP has to pass the guard; what comes to a Unix socket and isn't GET or HEAD
   // has to come from the group. `handler` is called as long as the loop runs.
   Server( boost::asio::io_context &loop, Listener listener, Handler handler, Limits limits = {},
           Guard guard = {}, Sockets::ControlGroup group = Sockets::ControlGroup() );
   Server( const Server & ) = delete;
   Server &operator=( const Server & ) = delete;

   const std::string &name() const { return listener_.name(); }
   // Whether it is at a Unix socket.
   bool isLocal() const { return listener_.isLocal(); }

 private:
   using Protocol = boost::asio::generic::stream_protocol;

   void accept();
   void acceptLater( const std::string &why );

   Listener listener_;
   const std::shared_ptr<const Handler> handler_;
   const Limits limits_;
   const Guard guard_;
   const Sockets::ControlGroup group_;
   boost::asio::basic_socket_acceptor<Protocol> acceptor_;
   boost::asio::steady_timer pause_;
   bool isPausing_ = false; // the last try to accept a client failed
   // Each connection shares it, so that its users are counted.
   const std::shared_ptr<void> open_ = std::make_shared<bool>();
   const std::shared_ptr<size_t> streams_ = std::make_shared<size_t>( 0 );
};

} // namespace Http
