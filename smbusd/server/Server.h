#pragma once

#include "smbusd/server/Session.h"
#include "sockets/SocketFile.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/steady_timer.hpp>

#include <map>
#include <memory>
#include <set>
#include <string>

namespace Smbusd {

// Accepts clients at one socket until it is stopped. A client beyond the limits gets a refusal as
// its first answer. But when all places are taken, the connection that has been idle for the
// longest time gives way to a new one: its client can connect again.
class Server {
 public:
   // Removes the socket file at the end. Clients are accepted in the thread of the io_context; each
   // has a thread of its own. The buffers outlive it.
   Server( boost::asio::io_context &, std::unique_ptr<Sockets::SocketFile>, MakeConversation,
           const Limits &, Buffers & );

   // Waits for the threads of the clients: what they wait for has to be stopped before.
   ~Server();

   // Accepts no more clients and ends all connections, so that the io_context has no more work.
   void stop();

 private:
   using Protocol = boost::asio::local::stream_protocol;

   void accept();
   void pause( const std::string &reason );
   void admit( Protocol::socket );
   std::string whyNoPlaceFor( const Peer & );
   bool makePlace();

   std::unique_ptr<Sockets::SocketFile> file_;
   const MakeConversation makeConversation_;
   const Limits limits_;
   Buffers &buffers_;
   Protocol::acceptor acceptor_;
   boost::asio::steady_timer pause_;
   bool pausing_ = false;
   std::map<Session *, std::unique_ptr<Session>> sessions_;
   std::set<const Session *> leaving_; // have given way, or were refused
};

} // namespace Smbusd
