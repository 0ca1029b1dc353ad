#include "smbusd/busses/linux/Claim.h"

#include <fmt/format.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace Smbusd {

// The kernel's record locks: they need no file of their own, can't stay behind, and know their
// owner.
std::string claim( int file, off_t start, off_t size ) {
   struct flock lock {};
   lock.l_type = F_WRLCK;
   lock.l_whence = SEEK_SET;
   lock.l_start = start;
   lock.l_len = size;
   if ( fcntl( file, F_SETLK, &lock ) == 0 )
      return {};
   if ( errno != EAGAIN && errno != EACCES )
      return fmt::format( "can't be locked: {}", std::strerror( errno ) );
   if ( fcntl( file, F_GETLK, &lock ) == 0 && lock.l_type != F_UNLCK && lock.l_pid > 0 )
      return fmt::format( "process {} serves it already; stop that server first", lock.l_pid );
   return "another server serves it already; stop that one first";
}

} // namespace Smbusd
