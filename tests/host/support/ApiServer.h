#pragma once

#include "host/serve/Api.h"
#include "http/Server.h"

namespace Host {

// An Api on a Unix socket of a test.
class ApiServer : public Http::Server {
 public:
   ApiServer( boost::asio::io_context &loop, const std::filesystem::path &socket, const Api &api,
              Http::Limits limits = {} )
      : Http::Server(
           loop, Http::Listener::atFile( socket ),
           [&api]( const Http::Request &request, const Http::Reply &reply ) {
              api.handle( request, reply );
           },
           limits ) {}
};

} // namespace Host
