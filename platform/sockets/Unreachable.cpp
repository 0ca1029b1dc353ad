#include "sockets/Unreachable.h"

#include <fmt/format.h>

#include <grp.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace Sockets {

namespace {

// The group that the socket's file lets in; empty when the file can't be looked at.
std::string groupOf( const std::string &path ) {
   struct stat file {};
   if ( stat( path.c_str(), &file ) != 0 )
      return {};
   const group *owner = getgrgid( file.st_gid );
   return owner ? owner->gr_name : std::to_string( file.st_gid );
}

} // namespace

std::string whyUnreachable( const std::string &path, int error ) {
   if ( error == ENOENT )
      return fmt::format( "{}: there is no such socket; is its server running?", path );
   if ( error == ECONNREFUSED )
      return fmt::format( "{}: its server has ended; start it again", path );
   if ( error != EACCES )
      return fmt::format( "{}: {}", path, std::strerror( error ) );
   const std::string group = groupOf( path );
   return fmt::format( "{}: permission denied; {} may use it", path,
                       group.empty() ? "other users"
                                     : fmt::format( "root and members of the group {}", group ) );
}

} // namespace Sockets
