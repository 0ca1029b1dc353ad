#include "host/session/Supervisor.h"

#include "host/plugin/ObjectCalls.h"
#include "host/session/ModuleReadings.h"

#include <algorithm>
#include <fmt/format.h>
#include <pl.h>
#include <utility>

namespace Host {

Supervisor::Supervisor( const BoardFiles::Board &board, Limits limits, Time now, ServerProbe probe )
   : board_( board ), limits_( std::move( limits ) ), probe_( std::move( probe ) ),
     schedule_( board, limits_, now ), current_( limits_ ), classifier_( board, limits_ ),
     record_( board, limits_, now ) {}

void Supervisor::childStarted() {
   ++childStarts_;
   beginAnew();
}

// Nothing is up.
void Supervisor::beginAnew() {
   isInOrder_ = false;
   startFault_.reset();
   schedule_.childStarted();
   classifier_.childStarted();
}

void Supervisor::childNotStarted( const std::string &why, Time now ) {
   deaths_.notStarted( now );
   startFault_ = Fault{ .words = why };
   for ( size_t i = 0; i < board_.objects.size(); ++i ) {
      record_.failed( i, *startFault_, now );
      refuse( i );
   }
}

std::optional<Command> Supervisor::next( Time now ) {
   if ( current_.isRunning() || loadFault_ )
      return {};
   const size_t before = schedule_.rounds();
   auto command = schedule_.next( actions_, now );
   if ( schedule_.rounds() != before && !roundBegan_ )
      roundBegan_ = now;
   if ( command ) {
      if ( isInOrder_ )
         lastSign_ = now;
      classifier_.operationBegins();
      current_.start( *command, now );
   }
   return command;
}

void Supervisor::ask( size_t object, const Action &action, Answer answer, Time now ) {
   actions_.add( object, action, std::move( answer ) );
   if ( loadFault_ || startFault_ || schedule_.mustWait( object, now ) )
      refuse( object );
}

// Answers all pending actions of an object with the object's fault.
void Supervisor::refuse( size_t object ) {
   actions_.refuse( object, loadFault_.value_or( record_.fault( object ) ) );
}

void Supervisor::heard( const Event &event, Time now ) {
   if ( const auto *trace = std::get_if<Trace>( &event ) ) {
      const auto *add = current_.as<AddCommand>();
      classifier_.heard( *trace, add ? std::optional( add->object ) : std::nullopt, now );
   }
   if ( !current_.isRunning() )
      return;
   if ( const auto *reading = std::get_if<Reading>( &event ) ) {
      if ( isInOrder_ )
         lastSign_ = now;
      heardReading( *reading, now );
      classifier_.operationBegins(); // traces from here on belong to the next one
   } else if ( const auto *limits = std::get_if<SupplyLimits>( &event ) ) {
      if ( current_.as<ReadCommand>() )
         record_.limitsWere( current_.object().value(), limits->registers );
   } else if ( const auto *memory = std::get_if<ModuleMemory>( &event ) ) {
      if ( current_.as<ReadCommand>() )
         modules_.heard( current_.object().value(), *memory );
   } else if ( const auto *done = std::get_if<Done>( &event ) ) {
      isInOrder_ = isInOrder_ || current_.object().has_value();
      if ( isInOrder_ )
         lastSign_ = now;
      const auto command = current_.end( now );
      deaths_.commandEnded();
      std::visit( [&]( const auto &what ) { ended( what, *done, now ); }, *command );
      classifier_.operationBegins();
      forgetDeath( now );
      if ( roundBegan_ && roundDone() ) {
         wholeRounds_ = { wholeRounds_.count + 1, now - *roundBegan_ };
         roundBegan_.reset();
      }
   }
}

std::string Supervisor::plugInFault() const {
   if ( loadFault_ )
      return "the plug-in can't be loaded: " + toText( *loadFault_ );
   return startFault_ ? toText( *startFault_ ) : death_;
}

// Once each object is up again, or has failed by itself.
void Supervisor::forgetDeath( Time now ) {
   if ( death_.empty() )
      return;
   for ( size_t i = 0; i < board_.objects.size(); ++i )
      if ( !schedule_.isUp( i ) && !schedule_.mustWait( i, now ) )
         return;
   death_.clear();
}

// Between two operations the next one still has all of its time.
void Supervisor::operationIs( const std::optional<SharedPage::Operation> &operation, Time now ) {
   if ( operation )
      current_.operationBegins( operation->name, operation->since );
   else if ( !current_.operation().empty() )
      current_.operationBegins( "", now );
}

void Supervisor::heardReading( Reading reading, Time now ) {
   if ( current_.as<ReadCommand>() ) {
      const size_t object = current_.object().value();
      const Time at = classifier_.classify( reading, object, now );
      if ( schedule_.modules().isModule( object ) )
         return heardMemory( object, reading, now );
      record_.read( object, reading, at );
      const auto module = schedule_.modules().moduleIn( object );
      if ( module && reading.name == presenceName )
         heardPresence( *module, reading, now );
   } else if ( current_.as<ActCommand>() ) {
      classifier_.explain( reading );
      result_ = reading;
   }
}

// While a cage can't be read, nobody knows whether its module is still there.
void Supervisor::heardPresence( size_t module, const Reading &presence, Time now ) {
   if ( isBad( presence.state ) ) {
      schedule_.modulePresenceIsUnknown( module );
      return;
   }
   const bool isThere = presence.state == State::Ok;
   const bool isNew = schedule_.modulePresenceIs( module, isThere, now );
   if ( isNew )
      modules_.gone( module );
   if ( isNew || !isThere )
      record_.moduleIsAbsent( module, now );
}

// Reading clears flags, so those of a part count, too.
void Supervisor::heardMemory( size_t module, const Reading &memory, Time now ) {
   Fault fault = memory.fault;
   if ( memory.state == State::Ok ) {
      const ModuleRecord *record = modules_.complete( module, now );
      if ( record && record->module.isReady != false ) {
         schedule_.moduleRead( module, now );
         record_.moduleWas( module, readingsOf( record->module, record->flags ), now );
         record_.good( module, now );
         return;
      }
      fault.words =
         record ? "the module is not ready" : "its memory follows none of the known standards";
   } else if ( const ModuleRecord *part = modules_.incomplete( module, now ) ) {
      record_.read( module, flagsReadingOf( part->module, part->flags ), now );
   }
   if ( schedule_.moduleMissed( module, now ) )
      record_.failed( module, fault, now );
}

void Supervisor::ended( const LoadCommand &, const Done &done, Time ) {
   if ( done.fault )
      failPlugin( *done.fault );
   else
      schedule_.pluginLoaded();
}

void Supervisor::ended( const InitCommand &command, const Done &done, Time now ) {
   if ( !done.fault ) {
      schedule_.kindReady( command.kind );
   } else if ( !done.fault->status ) { // the plug-in didn't run it
      failKind( command.kind, *done.fault, now );
   } else {
      Fault fault = *done.fault;
      fault.words = classifier_.faultWords();
      if ( fault.status == PL_STATUS_SOCKET ) {
         fault.words = waitingForServer;
         fault = connectionFault( fault );
      }
      failConnection( fault, now );
   }
}

void Supervisor::ended( const AddCommand &command, const Done &done, Time now ) {
   if ( done.fault ) {
      Fault fault = *done.fault;
      if ( const std::string why = classifier_.faultWords(); !why.empty() )
         fault.words += ": " + why;
      schedule_.objectFailed( command.object, now );
      fail( command.object, fault, now );
      return;
   }
   schedule_.objectUp( command.object );
   record_.good( command.object, now );
   if ( record_.blinks( command.object ) ) // the child before this one ran the LED's timer
      ask( command.object, { "set_light_setting", { PL_LED_BEACON } }, {}, now );
}

void Supervisor::ended( const ReadCommand &command, const Done &done, Time now ) {
   const size_t object = command.objects.front();
   if ( done.fault ) {
      schedule_.objectFailed( object, now );
      fail( object, *done.fault, now );
      return;
   }
   if ( schedule_.modules().isModule( object ) )
      return;
   schedule_.objectRead( object, classifier_.wantsAnotherRead( object ) );
   record_.good( object, now );
}

void Supervisor::ended( const ActCommand &command, const Done &done, Time now ) {
   Reading result = std::exchange( result_, {} ).value_or( Reading{ .state = State::Unreadable } );
   if ( done.fault )
      result.fault = *done.fault;
   const Action &action = command.action;
   if ( action.operation == "set_light_setting" && result.state == State::Ok )
      record_.ledWasSet( command.object, action.arguments.at( 0 ), now );
   else if ( action.operation == "set_rpm" && result.state == State::Ok )
      record_.fanWasSet( command.object, action.arguments.at( 0 ), now );
   actions_.answer( command.object, result );
}

void Supervisor::childDied( const std::string &why, Time now ) {
   const DeathCause cause = deaths_.died( current_, now );
   const bool wasEnded = current_.overdue( now ).has_value(); // it took too long
   current_.stop();
   beginAnew();
   const Fault fault{ .words = printable( why ) };
   if ( cause.what == DeathCause::What::Object ) {
      if ( wasEnded )
         schedule_.objectFailed( cause.object, now );
      else
         schedule_.objectEndedChild( cause.object, now );
      fail( cause.object, fault, now );
   }
   if ( cause.what == DeathCause::What::Connection )
      failConnection( connectionFault( fault ), now );
   else if ( cause.what == DeathCause::What::Plugin )
      failPlugin( fault );
   else if ( cause.what == DeathCause::What::Unknown )
      death_ = "the plug-in's process ended: " + fault.words;
}

void Supervisor::failPlugin( const Fault &fault ) {
   loadFault_ = fault;
   for ( size_t i = 0; i < board_.objects.size(); ++i )
      refuse( i );
}

void Supervisor::fail( size_t object, const Fault &fault, Time now ) {
   record_.failed( object, fault, now );
   refuse( object );
}

void Supervisor::failKind( BoardFiles::Kind kind, const Fault &fault, Time now ) {
   schedule_.kindFailed( kind, now );
   for ( size_t i = 0; i < board_.objects.size(); ++i )
      if ( board_.objects[i].kind == kind ) {
         record_.failed( i, fault, now );
         refuse( i );
      }
}

// All kinds use one connection and one topology.
void Supervisor::failConnection( const Fault &fault, Time now ) {
   for ( const BoardFiles::Kind kind : schedule_.kinds() )
      if ( !schedule_.isReady( kind ) )
         failKind( kind, fault, now );
}

// The plug-in doesn't tell why it can't connect, so the server's socket is looked at.
Fault Supervisor::connectionFault( Fault fault ) const {
   const std::string why = probe_();
   if ( !why.empty() && fault.words.starts_with( waitingForServer ) )
      fault.words = fmt::format( "{}: {}", waitingForServer, why );
   return fault;
}

void Supervisor::tick( Time now ) {
   const auto slow = current_.slowInit( now );
   if ( !slow )
      return;
   const Fault fault = connectionFault( *slow );
   for ( size_t i = 0; i < board_.objects.size(); ++i )
      if ( !schedule_.isUp( i ) && !schedule_.isBackingOff( i, now ) ) // that has its own fault
         record_.failed( i, fault, now );
}

Time Supervisor::wakeAt( Time now ) const {
   Time wake = schedule_.wakeAt( now );
   const auto [slow, overdue] = current_.deadlines();
   for ( const Time time : { slow, overdue, deaths_.nextStart() } )
      if ( time > now )
         wake = std::min( wake, time );
   return wake;
}

} // namespace Host
