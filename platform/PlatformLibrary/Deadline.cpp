#include "PlatformLibrary/Deadline.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <limits>

namespace PlatformLibrary {

using namespace std::chrono;

Deadline::Deadline( milliseconds fromNow ) : end_( steady_clock::now() + fromNow ) {}

milliseconds Deadline::left() const {
   return std::max( ceil<milliseconds>( end_ - steady_clock::now() ), milliseconds::zero() );
}

bool Deadline::waitFor( int fd, short events ) const {
   for ( ;; ) {
      pollfd watched{ fd, events, 0 };
      const auto wait =
         std::min<milliseconds::rep>( left().count(), std::numeric_limits<int>::max() );
      const int ready = poll( &watched, 1, static_cast<int>( wait ) );
      if ( ready > 0 )
         return true;
      if ( ready < 0 && errno != EINTR )
         return false;
      if ( left() == milliseconds::zero() ) {
         errno = ETIMEDOUT;
         return false;
      }
   }
}

} // namespace PlatformLibrary
