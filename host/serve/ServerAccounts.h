#pragma once

#include "health/Evidence.h"
#include "host/serve/Why.h"

#include <boost/asio/io_context.hpp>
#include <chrono>
#include <functional>
#include <string>

namespace SmbusControl {
class Request;
class Response;
} // namespace SmbusControl

namespace Host {

// What the plug-in's server knows of failures, from its answer to a request for load.
Health::Evidence evidenceOf( const SmbusControl::Response &response );

// Asks the plug-in's server at its control socket what passed on its busses.
class ServerAccounts {
 public:
   // The loads of all busses since the server's start as a JSON object; or why there are none.
   using Answer = std::function<void( std::string json, std::string error )>;

   // The socket that the plug-in connects to; the control socket has .control after its name.
   // Empty: it is not known.
   ServerAccounts( boost::asio::io_context &loop, std::string serverSocket,
                   std::chrono::milliseconds limit = std::chrono::seconds( 2 ) )
      : loop_( loop ), serverSocket_( std::move( serverSocket ) ), limit_( limit ) {}

   // What it knows of failures; or why that is not known. Without an error it is all of it.
   using EvidenceAnswer = std::function<void( Health::Evidence evidence, std::string error )>;

   // As the server tells them; or why it doesn't.
   using LoadsAnswer =
      std::function<void( const SmbusControl::Response &loads, std::string error )>;

   // All call back once, on the loop. Questions don't wait for each other.
   void askFor( const SmbusControl::Request &request, LoadsAnswer ended ) const;
   void ask( Answer answer ) const;
   void askLoads( LoadsAnswer answer ) const;
   void askEvidence( EvidenceAnswer answer ) const;
   // Adds the last transfers of its chips, and what of their busses the server leaves alone.
   // `ready` is called once, with all that is known of it.
   void addTransfers( Why why, std::function<void( const Why & )> ready ) const;

 private:
   class Question;
   boost::asio::io_context &loop_;
   const std::string serverSocket_;
   const std::chrono::milliseconds limit_;
};

} // namespace Host
