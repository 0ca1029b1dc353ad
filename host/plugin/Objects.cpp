#include "host/plugin/Objects.h"

#include <fmt/format.h>
#include <stdexcept>

namespace Host {
namespace {

template <class Call>
Done guard( const Call &call ) {
   try {
      return call();
   } catch ( const std::exception &exception ) {
      return Done{ Fault{ .words = exception.what() } };
   }
}

} // namespace

Done Objects::load( const std::string &plugin ) {
   return guard( [&] {
      plugin_.emplace( plugin );
      return Done{};
   } );
}

Done Objects::init( BoardFiles::Kind kind, const char *topology ) const {
   return guard( [&] {
      const int status = plugin_.value().init( kind, topology );
      return status == PL_STATUS_OK ? Done{} : Done{ Fault{ .status = status } };
   } );
}

Done Objects::add( size_t object, const BoardFiles::ObjectDescription &description ) {
   return guard( [&] {
      const auto &kept = descriptions_.emplace( object, description ).first->second;
      const Record record = plugin_.value().add( kept );
      if ( isNull( record ) )
         return Done{ Fault{
            .words = fmt::format( "pl_{}_add returned no object", plugInTypeOf( kept.kind ) ) } };
      records_.insert_or_assign( object, record );
      supplies_.erase( object );
      modules_.erase( object );
      auto *const *proxy = std::get_if<pl_smbus *>( &record );
      if ( kept.kind == BoardFiles::Kind::Module )
         addModule( object, kept, *proxy );
      else if ( proxy && kept.reads == "pmbus" )
         supplies_.emplace( object, *proxy );
      return Done{};
   } );
}

// An SFP has a second address.
void Objects::addModule( size_t object, const BoardFiles::ObjectDescription &description,
                         pl_smbus *first ) {
   pl_smbus *second = nullptr;
   if ( !description.second.empty() ) {
      auto &kept = secondOfModules_.emplace( object, description ).first->second;
      kept.text = description.second;
      second = std::get<pl_smbus *>( plugin_.value().add( kept ) );
      if ( !second )
         throw std::runtime_error( "pl_smbus_add returned no object for " + description.second );
   }
   modules_.emplace( object, ModuleReader( first, second, pause_ ) );
}

Done Objects::read( size_t object, bool fresh, const Sinks &sinks ) {
   return guard( [&] {
      const auto supply = supplies_.find( object );
      const auto module = modules_.find( object );
      if ( module != modules_.end() )
         module->second.read( fresh, sinks.readings, sinks.others );
      else if ( supply == supplies_.end() )
         Host::read( records_.at( object ), sinks.readings );
      else if ( const auto limits = supply->second.read( sinks.readings ) )
         sinks.others( *limits );
      return Done{};
   } );
}

Done Objects::act( const ActCommand &command, const Sinks &sinks ) const {
   if ( command.action.operation == clearFaults && !supplies_.contains( command.object ) ) {
      sinks.readings.done( { .name = clearFaults,
                             .state = State::Unsupported,
                             .fault = { .words = "only an object with \"reads\": \"pmbus\" has "
                                                 "faults to clear" } } );
      return {};
   }
   return guard( [&] {
      Host::act( records_.at( command.object ), command.action, sinks.readings );
      return Done{};
   } );
}

} // namespace Host
