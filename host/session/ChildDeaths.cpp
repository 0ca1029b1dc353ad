#include "host/session/ChildDeaths.h"

namespace Host {
namespace {

using What = DeathCause::What;

DeathCause causeOf( const CurrentCommand &command ) {
   if ( command.operation().empty() ) // the command was sent, but the child had not begun it
      return { What::Unknown };
   if ( const auto *add = command.as<AddCommand>() )
      return { What::Object, add->object };
   if ( const auto *read = command.as<ReadCommand>() )
      return { What::Object, read->object };
   if ( const auto *act = command.as<ActCommand>() )
      return { What::Object, act->object };
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
