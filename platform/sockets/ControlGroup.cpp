#include "sockets/ControlGroup.h"

#include <fmt/format.h>

#include <algorithm>

namespace Sockets {

ControlGroup::ControlGroup( const std::string &name, uid_t ownUser )
   : name_( name ), ownUser_( ownUser ) {
   if ( !name.empty() )
      group_ = groupNamed( name );
}

bool ControlGroup::has( const Credentials &client ) const {
   if ( client.user == ownUser_ || client.user == 0 )
      return true;
   return group_ &&
          ( client.group == *group_ || std::find( client.groups.begin(), client.groups.end(),
                                                  *group_ ) != client.groups.end() );
}

std::string ControlGroup::whyNot( const Credentials &client ) const {
   const std::string user = nameOf( client.user );
   if ( group_ )
      return fmt::format(
         "user {0} may only read here; members of the group {1} may act: root adds "
         "{0} by \"adduser {0} {1}\", then {0} logs in again",
         user, name_ );
   return fmt::format(
      "user {} may only read here; root and the user {} may act, and members of the "
      "group that the server is given by --control-group; it runs without",
      user, nameOf( ownUser_ ) );
}

} // namespace Sockets
