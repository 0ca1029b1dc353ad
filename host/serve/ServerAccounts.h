#pragma once

#include <boost/asio/io_context.hpp>
#include <chrono>
#include <functional>
#include <string>

namespace Host {

// Asks the plug-in's server at its control socket how busy its busses are.
class ServerAccounts {
 public:
   // The loads of all busses since the server's start as a JSON object; or why there are none.
   using Answer = std::function<void( std::string json, std::string error )>;

   // The socket that the plug-in connects to; the control socket has .control after its name.
   // Empty: it is not known.
   ServerAccounts( boost::asio::io_context &loop, std::string serverSocket,
                   std::chrono::milliseconds limit = std::chrono::seconds( 2 ) )
      : loop_( loop ), serverSocket_( std::move( serverSocket ) ), limit_( limit ) {}

   // Calls back once, on the loop. Questions don't wait for each other.
   void ask( Answer answer ) const;

 private:
   boost::asio::io_context &loop_;
   const std::string serverSocket_;
   const std::chrono::milliseconds limit_;
};

} // namespace Host
