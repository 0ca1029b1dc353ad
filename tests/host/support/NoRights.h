#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <string>

// While it exists, this process may not use the file, also when its user is root.
class NoRights {
 public:
   explicit NoRights( const std::string &path ) {
      ::chmod( path.c_str(), 0 );
      if ( ::geteuid() == 0 && ::seteuid( nobody ) == 0 )
         wasRoot_ = true;
   }
   ~NoRights() {
      if ( wasRoot_ && ::seteuid( 0 ) != 0 )
         ::_exit( 1 );
   }
   NoRights( const NoRights & ) = delete;
   NoRights &operator=( const NoRights & ) = delete;

 private:
   static constexpr uid_t nobody = 65534;
   bool wasRoot_ = false;
};
