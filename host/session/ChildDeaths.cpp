#include "host/session/ChildDeaths.h"

namespace Host {
namespace {

using What = DeathCause::What;

DeathCause causeOf( const CurrentCommand &command ) {
   if ( command.operation().empty() ) // the command was sent, but the child had not begun it
      return { What::Unknown };
   if ( const auto object = command.object() )
      return { What::Object, *object };
   return { command.as<InitCommand>() ? What::Connection : What::Plugin };
}

} // namespace

DeathCause ChildDeaths::died( const CurrentCommand &command, Time now ) {
   const DeathCause cause = causeOf( command );
   if ( cause.what == What::Unknown )
      backOff_.failed( now );
   return cause;
}

} // namespace Host
