// A client of the server without the plug-in: reads the thermometer of one bus.
#pragma once

#include "PlatformLibrary/PLSocket.h"

#include <string>

class Client {
 public:
   // Connects to the server at that path. Not while other threads connect.
   Client( const std::string &path, unsigned bus );
   ~Client();
   Client( const Client & ) = delete;
   Client &operator=( const Client & ) = delete;

   // A word of the temperature. Ends the program when it can't be read.
   void read();
   const Smbus::Request &request() const { return request_.request( 0 ); }

 private:
   PlatformLibrary::PLSocket socket_;
   Smbus::TransactionRequest request_;
};
