#pragma once

#include "smbusd/server/Session.h"
#include "sockets/SocketFile.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/steady_timer.hpp>

#include <memory>
#include <set>
#include <string>

namespace Smbusd {

inline constexpr size_t maxClients = 64;

// Takes clients at a socket until it is stopped. One that is over the limit is told so in
// answer to its first transaction.
class Server {
 public:
   // The socket file is removed with the server. Everything runs in the io_context's thread.
   Server( boost::asio::io_context &, std::unique_ptr<Sockets::SocketFile>, Dispatcher & );

   // No client is taken any more, connections end, and the io_context has nothing left to do.
   void stop();

 private:
   using Protocol = boost::asio::local::stream_protocol;

   void accept();
   void admit( Protocol::socket );

   std::unique_ptr<Sockets::SocketFile> file_;
   Dispatcher &dispatcher_;
   Protocol::acceptor acceptor_;
   boost::asio::steady_timer pause_;
   std::set<std::shared_ptr<Session>> sessions_;
};

} // namespace Smbusd
