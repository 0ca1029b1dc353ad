#pragma once

#include "host/plugin/Messages.h"

#include <string>
#include <vector>

namespace Host {

// Finds in the traces of one operation the words that say why it failed.
class FaultWords {
 public:
   // `beginnings`: of the traces whose rest are such words.
   explicit FaultWords( std::vector<std::string> beginnings )
      : beginnings_( std::move( beginnings ) ) {}

   void operationBegins();
   void heard( const Trace &trace );

   // Whether a trace of the operation told a fault of the bus.
   bool hasFault() const { return !fault_.empty(); }
   // Whether any trace of the operation began so.
   bool hasTrace( const std::string &beginning ) const;
   // The words of the last such trace; else the last messages of level 0.
   std::string words() const;

 private:
   std::vector<std::string> beginnings_;
   std::string fault_{};
   std::vector<std::string> traces_{};   // all
   std::vector<std::string> messages_{}; // the last ones, oldest first
};

// Text from outside, fit for a terminal and for JSON: control characters and bytes that are no
// UTF-8 are replaced.
std::string printable( const std::string &text );

} // namespace Host
