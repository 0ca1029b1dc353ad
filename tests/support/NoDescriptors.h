#pragma once

#include <sys/resource.h>

// While it exists, this process gets no further descriptors. Those that are open work on. Not for
// builds with sanitizers: theirs look at memory through a pipe.
class NoDescriptors {
 public:
   NoDescriptors() {
      ::getrlimit( RLIMIT_NOFILE, &before_ );
      rlimit none = before_;
      none.rlim_cur = 3; // standard input, output and error
      ::setrlimit( RLIMIT_NOFILE, &none );
   }
   ~NoDescriptors() { ::setrlimit( RLIMIT_NOFILE, &before_ ); }
   NoDescriptors( const NoDescriptors & ) = delete;
   NoDescriptors &operator=( const NoDescriptors & ) = delete;

 private:
   rlimit before_{};
};
