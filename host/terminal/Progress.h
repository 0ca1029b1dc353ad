#pragma once

#include "host/session/BackOff.h"

#include <cstddef>
#include <string>

namespace Host {

// Shows on standard error how many objects are brought up, as a bar. Only on a terminal, and only
// of what takes longer than most people notice.
class Progress {
 public:
   static constexpr Clock::duration patience = std::chrono::milliseconds( 500 );

   Progress( bool isTerminal, Time start ) : isTerminal_( isTerminal ), start_( start ) {}
   // Clears the bar.
   ~Progress();
   Progress( const Progress & ) = delete;
   Progress &operator=( const Progress & ) = delete;

   // `settled` of `all` objects were brought up, or failed. `operation` runs now.
   void update( size_t settled, size_t all, const std::string &operation, Time now );

 private:
   bool isTerminal_;
   Time start_;
   bool isDrawn_ = false;
};

} // namespace Host
