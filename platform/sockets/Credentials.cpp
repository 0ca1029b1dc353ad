#include "sockets/Credentials.h"

#include <fmt/format.h>

#include <grp.h>
#include <pwd.h>
#include <sys/socket.h>

#include <array>
#include <stdexcept>

namespace Sockets {

std::vector<gid_t> groupsOf( int socket ) {
   socklen_t size = 0;
   getsockopt( socket, SOL_SOCKET, SO_PEERGROUPS, nullptr, &size ); // tells how much room it wants
   std::vector<gid_t> groups( size / sizeof( gid_t ) );
   if ( getsockopt( socket, SOL_SOCKET, SO_PEERGROUPS, groups.data(), &size ) != 0 )
      return {};
   groups.resize( size / sizeof( gid_t ) );
   return groups;
}

Credentials credentialsOf( int socket ) {
   ucred known{};
   socklen_t size = sizeof known;
   if ( getsockopt( socket, SOL_SOCKET, SO_PEERCRED, &known, &size ) != 0 )
      return {};
   return { known.uid, known.gid, known.pid, groupsOf( socket ) };
}

std::string nameOf( uid_t user ) {
   passwd entry{};
   passwd *found = nullptr;
   std::array<char, 4096> room{};
   getpwuid_r( user, &entry, room.data(), room.size(), &found );
   return found ? found->pw_name : std::to_string( user );
}

gid_t groupNamed( const std::string &name ) {
   const group *found = getgrnam( name.c_str() );
   if ( !found )
      throw std::runtime_error( fmt::format( "there is no group {}", name ) );
   return found->gr_gid;
}

} // namespace Sockets
