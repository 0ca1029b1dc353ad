#pragma once

#include "host/serve/Api.h"
#include "host/session/BackOff.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <filesystem>
#include <memory>
#include <sockets/SocketFile.h>
#include <string>

namespace Host {

// What the server allows to its clients.
struct HttpLimits {
   uint64_t body = 64 * 1024;                  // bytes; the answer to more is 413
   uint32_t header = 8 * 1024;                 // bytes; the answer to more is 431
   size_t connections = 64;                    // at a time; the answer to one more is 503
   std::chrono::milliseconds idle{ 30'000 };   // a connection without a request is closed then
   std::chrono::milliseconds action{ 60'000 }; // the answer to an unfinished action is 504 then
   // A stream of events that has none gets a comment then: so both sides see that the other is
   // there.
   std::chrono::milliseconds comment{ 15'000 };
};

// Serves an Api over HTTP on a Unix socket, on an event loop.
class HttpServer {
 public:
   // Replaces the socket of a server that is dead. Throws std::runtime_error when another server is
   // running there, when the path is not a socket, or when the system refuses. `api` must outlive
   // the loop.
   HttpServer( boost::asio::io_context &loop, const std::filesystem::path &socket, const Api &api,
               HttpLimits limits = {} );
   HttpServer( const HttpServer & ) = delete;
   HttpServer &operator=( const HttpServer & ) = delete;

 private:
   void accept();
   void acceptLater( const std::string &why );

   Sockets::SocketFile file_;
   const Api &api_;
   const HttpLimits limits_;
   boost::asio::local::stream_protocol::acceptor acceptor_;
   boost::asio::steady_timer pause_;
   BackOff backOff_{ std::chrono::milliseconds( 100 ), std::chrono::seconds( 1 ) };
   bool isPausing_ = false; // the last try to accept a client failed
   // Each connection shares it, so that its users are counted.
   const std::shared_ptr<void> open_ = std::make_shared<bool>();
};

} // namespace Host
