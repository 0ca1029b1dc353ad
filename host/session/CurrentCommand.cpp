#include "host/session/CurrentCommand.h"

#include <fmt/format.h>

namespace Host {

void CurrentCommand::operationBegins( const std::string &operation, Time since ) {
   if ( !running_ )
      return;
   running_->operation = operation;
   running_->since = since;
}

std::optional<Command> CurrentCommand::end( Time now ) {
   auto *read = running_ ? std::get_if<ReadCommand>( &running_->command ) : nullptr;
   if ( read && read->objects.size() > 1 ) {
      const size_t first = read->objects.front();
      read->objects.erase( read->objects.begin() );
      operationBegins( "", now );
      return ReadCommand{ { first } };
   }
   const auto ended = std::exchange( running_, {} );
   return ended ? std::optional( ended->command ) : std::nullopt;
}

std::optional<size_t> CurrentCommand::object() const {
   if ( const auto *add = as<AddCommand>() )
      return add->object;
   if ( const auto *act = as<ActCommand>() )
      return act->object;
   const auto *read = as<ReadCommand>();
   return read ? std::optional( read->objects.at( 0 ) ) : std::nullopt;
}

std::optional<std::string> CurrentCommand::overdue( Time now ) const {
   if ( !running_ || now - running_->since < limit() )
      return {};
   return fmt::format( "{}{} did not return within {:g} s",
                       as<InitCommand>() ? fmt::format( "{}: ", waitingForServer ) : "",
                       running_->operation, std::chrono::duration<double>( limit() ).count() );
}

std::optional<Fault> CurrentCommand::slowInit( Time now ) const {
   const auto *init = as<InitCommand>();
   if ( !init || now - running_->since < limits_.patience )
      return {};
   return Fault{ .words = fmt::format( "{}: pl_{}_init is trying", waitingForServer,
                                       plugInTypeOf( init->kind ) ) };
}

std::pair<Time, Time> CurrentCommand::deadlines() const {
   if ( !running_ )
      return { Time::max(), Time::max() };
   return { running_->since + limits_.patience, running_->since + limit() };
}

} // namespace Host
