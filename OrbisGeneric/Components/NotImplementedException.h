// Thrown by an operation that its class does not support.
#pragma once

#include <exception>
#include <string>

class NotImplementedException : public std::exception {
 public:
   explicit NotImplementedException( std::string method )
      : message_( "Not implemented " + method ) {}
   const char *what() const noexcept override { return message_.c_str(); }

 private:
   std::string message_;
};
