#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace Sockets {

// Who is at the other end of a Unix stream socket, as the kernel has noted it at its connect(). A
// program gets its groups when its user logs in: whoever becomes a member of a group later has to
// log in again.
struct Credentials {
   uid_t user = static_cast<uid_t>( -1 );
   gid_t group = static_cast<gid_t>( -1 );
   pid_t process = 0;
   std::vector<gid_t> groups{}; // the supplementary ones
};

// With a user and a group that nobody has when the kernel tells none.
Credentials credentialsOf( int socket );
// The supplementary groups alone.
std::vector<gid_t> groupsOf( int socket );

// The name of a user, or the number where it has no name.
std::string nameOf( uid_t user );
// Throws std::runtime_error when there is no such group.
gid_t groupNamed( const std::string &name );

} // namespace Sockets
