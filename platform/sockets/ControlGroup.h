#pragma once

#include "sockets/Credentials.h"

#include <unistd.h>

#include <optional>
#include <string>

namespace Sockets {

// Who may not only read, but act: the server's own user, root, and the members of one group.
class ControlGroup {
 public:
   // Without a name, nobody beside the first two. Throws std::runtime_error when there is no such
   // group.
   explicit ControlGroup( const std::string &name = {}, uid_t ownUser = geteuid() );

   bool has( const Credentials &client ) const;
   // What a client is told whom it doesn't have: who that is, and what to do.
   std::string whyNot( const Credentials &client ) const;

 private:
   std::string name_;
   uid_t ownUser_;
   std::optional<gid_t> group_{};
};

} // namespace Sockets
