#pragma once

#include "smbusd/server/Session.h"
#include "sockets/SocketFile.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/steady_timer.hpp>

#include <map>
#include <memory>
#include <string>

namespace Smbusd {

inline constexpr size_t maxClients = 64;

// Accepts clients until it is stopped. A client beyond the limit gets a refusal as the answer to
// its first transaction.
class Server {
 public:
   // Removes the socket file at the end. Clients are accepted in the thread of the io_context; each
   // has a thread of its own.
   Server( boost::asio::io_context &, std::unique_ptr<Sockets::SocketFile>, Dispatcher & );

   // Waits for the threads of the clients: the dispatcher has to be stopped before.
   ~Server();

   // Accepts no more clients and ends all connections, so that the io_context has no more work.
   void stop();

 private:
   using Protocol = boost::asio::local::stream_protocol;

   void accept();
   void admit( Protocol::socket );

   std::unique_ptr<Sockets::SocketFile> file_;
   Dispatcher &dispatcher_;
   Protocol::acceptor acceptor_;
   boost::asio::steady_timer pause_;
   std::map<Session *, std::unique_ptr<Session>> sessions_;
};

} // namespace Smbusd
