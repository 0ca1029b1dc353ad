#pragma once

#include "host/plugin/Messages.h"

#include <string>
#include <vector>

namespace Host {

// Finds the reason of a failure in the traces of an operation.
class FaultWords {
 public:
   // A trace that starts with one of `beginnings` has the reason in the rest of its text.
   explicit FaultWords( std::vector<std::string> beginnings )
      : beginnings_( std::move( beginnings ) ) {}

   void operationBegins();
   void heard( const Trace &trace );

   // Whether one of the traces had a reason: a fault of the bus.
   bool hasFault() const { return !fault_.empty(); }
   // Whether any trace of the operation starts with this text.
   bool hasTrace( const std::string &beginning ) const;
   // The last reason. Without one, the last traces of level 0.
   std::string words() const;

 private:
   std::vector<std::string> beginnings_;
   std::string fault_{};
   std::vector<std::string> traces_{};   // all
   std::vector<std::string> messages_{}; // the last ones of level 0, oldest first
};

// A text that is safe for a terminal and for JSON: control characters and invalid UTF-8 are
// replaced.
std::string printable( const std::string &text );

} // namespace Host
