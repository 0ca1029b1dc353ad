// The time at which a call must end, on the monotonic clock, however often it waits.
#pragma once

#include <sys/time.h>

#include <chrono>

namespace PlatformLibrary {

class Deadline {
 public:
   explicit Deadline( std::chrono::milliseconds fromNow );

   // The time left, rounded up to milliseconds; 0 when it is over.
   std::chrono::milliseconds left() const;

   // Waits for one of the poll events. Returns false with errno set; ETIMEDOUT when the time is
   // over first.
   bool waitFor( int fd, short events ) const;

 private:
   std::chrono::steady_clock::time_point end_;
};

} // namespace PlatformLibrary
