// A point on the monotonic clock that bounds a whole call, however many waits it takes.
#pragma once

#include <sys/time.h>

#include <chrono>

namespace PlatformLibrary {

class Deadline {
 public:
   explicit Deadline( std::chrono::milliseconds fromNow );

   // What is left, rounded up to whole milliseconds; 0 when the time is up.
   std::chrono::milliseconds left() const;

   // Waits until one of the poll events holds for the descriptor. Returns false with errno set:
   // ETIMEDOUT when the time is up first.
   bool waitFor( int fd, short events ) const;

 private:
   std::chrono::steady_clock::time_point end_;
};

} // namespace PlatformLibrary
