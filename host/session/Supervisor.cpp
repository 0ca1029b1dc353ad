#include "host/session/Supervisor.h"

#include <algorithm>
#include <boost/algorithm/string/replace.hpp>
#include <cmath>
#include <fmt/format.h>
#include <pl.h>

namespace Host {
namespace {

constexpr auto waitingWords = "can't reach the SMBus server yet";

double seconds( Clock::duration duration ) {
   return std::chrono::duration<double>( duration ).count();
}

} // namespace

Supervisor::Supervisor( const BoardFiles::Board &board, Limits limits, Time now )
   : board_( board ), limits_( std::move( limits ) ), words_( board.traces.faults ),
     objects_( board.objects.size(), Object{ .record = ObjectRecord( now ) } ),
     polls_( board.traces ) {
   for ( size_t i = 0; i < objects_.size(); ++i ) {
      if ( !needs( i ) )
         objects_[i].notBefore = Time::max();
      else if ( kinds_.emplace( board.objects[i].kind, KindState{ .nextRound = now } ).second )
         kindOrder_.push_back( board.objects[i].kind );
   }
}

// Whether an object is to be brought up at all. What makes a driver object, the first of its did
// does; the system object may ask for any device.
bool Supervisor::needs( size_t object ) const {
   if ( !limits_.only || object == *limits_.only )
      return true;
   const auto did = board_.objects[*limits_.only].did;
   return object < *limits_.only && ( !did || board_.objects[object].did == did );
}

void Supervisor::childStarted() {
   loaded_ = false;
   for ( auto &[kind, state] : kinds_ )
      state.ready = false;
   for ( Object &object : objects_ )
      object.stands = false;
   polls_.clear();
}

std::optional<Command> Supervisor::next( Time now ) {
   if ( inHand_ || loadFault_ )
      return {};
   auto command = choose( now );
   if ( command ) {
      words_.operationBegins();
      inHand_ = InHand{ *command, now };
   }
   return command;
}

// First everything that brings objects up, then readings. What users ask for goes before both, as
// soon as its object stands.
std::optional<Command> Supervisor::choose( Time now ) {
   if ( !loaded_ )
      return LoadCommand{ {}, board_.topology };
   for ( const BoardFiles::Kind kind : kindOrder_ )
      if ( const KindState &state = kinds_[kind]; !state.ready && state.notBefore <= now )
         return InitCommand{ kind };
   if ( auto asked = asked_.next( [this]( size_t object ) { return objects_[object].stands; } ) )
      return asked;
   for ( size_t i = 0; i < objects_.size(); ++i )
      if ( wantsAdd( objects_[i], board_.objects[i].kind, now ) )
         return AddCommand{ i, board_.objects[i] };
   startRound( now );
   // From behind the last one on: where a round takes longer than a period, the last objects have
   // their turn too.
   for ( size_t k = 0; k < objects_.size(); ++k ) {
      const size_t i = ( nextRead_ + k ) % objects_.size();
      if ( objects_[i].stands && objects_[i].due ) {
         nextRead_ = i + 1;
         return ReadCommand{ i };
      }
   }
   nextRead_ = 0;
   return {};
}

bool Supervisor::wantsAdd( const Object &object, BoardFiles::Kind kind, Time now ) const {
   if ( object.stands || object.notBefore > now || !kinds_.at( kind ).ready )
      return false;
   // Read once is enough: such an object isn't needed again after a child's death.
   return !limits_.once || !object.tried || object.due;
}

void Supervisor::startRound( Time now ) {
   if ( limits_.once || limits_.only )
      return;
   for ( auto &[kind, state] : kinds_ ) {
      if ( now < state.nextRound )
         continue;
      state.nextRound = now + limits_.periodOf( kind );
      for ( size_t i = 0; i < objects_.size(); ++i )
         if ( board_.objects[i].kind == kind )
            objects_[i].due = objects_[i].stands;
   }
}

void Supervisor::ask( size_t object, const Action &action, Answer answer, Time now ) {
   asked_.add( object, action, std::move( answer ) );
   const Object &known = objects_[object];
   const KindState &kind = kinds_[board_.objects[object].kind];
   if ( loadFault_ || ( !known.stands && ( known.notBefore > now || kind.notBefore > now ) ) )
      refuse( object );
}

// Answers all that was asked of an object with what is wrong with it.
void Supervisor::refuse( size_t object ) {
   asked_.refuse( object, loadFault_.value_or( objects_[object].record.fault() ) );
}

void Supervisor::heard( const Event &event, Time now ) {
   if ( const auto *trace = std::get_if<Trace>( &event ) )
      heardTrace( *trace, now );
   if ( !inHand_ )
      return;
   if ( const auto *begun = std::get_if<Begun>( &event ) ) {
      words_.operationBegins();
      inHand_->operation = begun->operation;
      inHand_->since = now;
   } else if ( const auto *reading = std::get_if<Reading>( &event ) ) {
      take( *reading, now );
   } else if ( const auto *end = std::get_if<Done>( &event ) ) {
      const Command command = inHand_->command;
      inHand_.reset();
      childBackOff_.succeeded();
      std::visit( [&]( const auto &what ) { done( what, *end, now ); }, command );
   }
}

// What a timer tells is no word of the command that may be in hand by now.
void Supervisor::heardTrace( const Trace &trace, Time now ) {
   if ( !trace.timerOf )
      words_.heard( trace );
   std::optional<size_t> object = trace.timerOf;
   if ( const auto *add = inHand_ ? std::get_if<AddCommand>( &inHand_->command ) : nullptr;
        add && !object )
      object = add->object;
   if ( object && *object < objects_.size() )
      if ( const auto did = board_.objects[*object].did )
         polls_.heard( *did, trace, now );
}

void Supervisor::done( const LoadCommand &, const Done &done, Time ) {
   loaded_ = !done.fault;
   loadFault_ = done.fault;
   if ( loadFault_ )
      for ( size_t i = 0; i < objects_.size(); ++i )
         refuse( i );
}

void Supervisor::done( const InitCommand &command, const Done &done, Time now ) {
   KindState &kind = kinds_[command.kind];
   kind.ready = !done.fault;
   if ( !done.fault ) {
      kind.backOff.succeeded();
      return;
   }
   if ( !done.fault->status ) { // it wasn't carried out at all
      failKind( command.kind, *done.fault, now );
      return;
   }
   Fault fault = *done.fault;
   fault.words = fault.status == PL_STATUS_SOCKET ? waitingWords : words_.words();
   failConnection( fault, now );
}

void Supervisor::done( const AddCommand &command, const Done &done, Time now ) {
   Object &object = objects_[command.object];
   if ( done.fault ) {
      Fault fault = *done.fault;
      if ( const std::string why = words_.words(); !why.empty() )
         fault.words += ": " + why;
      fail( command.object, fault, now );
      return;
   }
   object.stands = object.tried = true;
   object.due = !limits_.only;
   object.record.isFine( now );
   if ( object.blinks )
      ask( command.object, { "set_light_setting", { PL_LED_BEACON } }, {}, now );
}

void Supervisor::done( const ReadCommand &command, const Done &done, Time now ) {
   Object &object = objects_[command.object];
   object.due = false;
   if ( done.fault ) {
      fail( command.object, *done.fault, now );
      return;
   }
   object.record.isFine( now );
   object.backOff.succeeded();
}

void Supervisor::done( const ActCommand &command, const Done &done, Time now ) {
   Reading result = std::exchange( result_, {} ).value_or( Reading{ .state = State::Unreadable } );
   if ( done.fault )
      result.fault = *done.fault;
   Object &object = objects_[command.object];
   if ( command.action.operation == "set_light_setting" && result.state == State::Ok ) {
      const int64_t setting = command.action.arguments.at( 0 );
      object.blinks = setting == PL_LED_BEACON;
      object.record.keep( { .name = "setting", .value = std::string( nameOfSetting( setting ) ) },
                          now );
   }
   asked_.answer( command.object, result );
}

void Supervisor::take( const Reading &reading, Time now ) {
   Reading known = reading;
   const auto *command = std::get_if<ReadCommand>( &inHand_->command );
   if ( command && known.state == State::Absent )
      judgeAbsence( known, board_.objects[command->object] );
   if ( known.state == State::Unreadable && known.fault.words.empty() )
      known.fault.words = words_.words();
   if ( command )
      record( command->object, known, now );
   else if ( std::holds_alternative<ActCommand>( inHand_->command ) )
      result_ = known;
}

// That a module is absent counts only when the bus was in order, or says that nobody is there. A
// module that the plug-in doesn't know is told by a trace.
void Supervisor::judgeAbsence( Reading &reading, const BoardFiles::ObjectDescription &slot ) const {
   const BoardFiles::PluginTraces &traces = board_.traces;
   if ( words_.sawFault() ) {
      const std::string words = words_.words();
      const std::string holds = boost::algorithm::replace_all_copy(
         traces.absentHolds, "{address}", fmt::format( "{:#04x}", slot.address ) );
      const bool nobodyThere = !traces.absentEnds.empty() && words.ends_with( traces.absentEnds ) &&
                               words.find( holds ) != std::string::npos;
      if ( !nobodyThere )
         reading.state = State::Unreadable;
   } else if ( words_.heardOf( traces.unmanaged ) ) {
      reading.state = State::Unmanaged;
   } else if ( words_.heardOf( traces.unreadable ) ) {
      reading.state = State::Unreadable;
   }
}

void Supervisor::record( size_t object, Reading reading, Time now ) {
   const BoardFiles::ObjectDescription &description = board_.objects[object];
   ObjectRecord &record = objects_[object].record;
   const Time at = description.kind == BoardFiles::Kind::Xcvr
                      ? polls_.judge( description.did, reading, now )
                      : now;
   record.take( reading, at );
   if ( description.kind != BoardFiles::Kind::Fan || description.fullScale <= 0 )
      return;
   if ( const auto *rpm = std::get_if<int64_t>( &reading.value ) )
      reading.value = std::round( 1000 * static_cast<double>( *rpm ) / description.fullScale ) / 10;
   reading.name = "share";
   reading.unit = "%";
   record.take( reading, at );
}

void Supervisor::childDied( const std::string &cause, Time now ) {
   const auto inHand = std::exchange( inHand_, {} );
   childStarted();
   // Whoever is to blame is kept back by a time of its own.
   if ( inHand && !inHand->operation.empty() )
      blame( inHand->command, { .words = printable( cause ) }, now );
   else
      childNotBefore_ = childBackOff_.failed( now );
}

void Supervisor::blame( const Command &command, const Fault &fault, Time now ) {
   if ( const auto *add = std::get_if<AddCommand>( &command ) )
      fail( add->object, fault, now );
   else if ( const auto *read = std::get_if<ReadCommand>( &command ) )
      fail( read->object, fault, now );
   else if ( const auto *act = std::get_if<ActCommand>( &command ) )
      fail( act->object, fault, now );
   else if ( std::holds_alternative<InitCommand>( command ) )
      failConnection( fault, now );
   else
      loadFault_ = fault;
}

void Supervisor::fail( size_t index, const Fault &fault, Time now ) {
   Object &object = objects_[index];
   object.record.isUnreadable( fault, now );
   object.tried = true;
   object.stands = object.due = false;
   object.notBefore = limits_.once ? Time::max() : object.backOff.failed( now );
   refuse( index );
}

void Supervisor::failKind( BoardFiles::Kind kind, const Fault &fault, Time now ) {
   KindState &state = kinds_[kind];
   state.notBefore = limits_.once ? Time::max() : state.backOff.failed( now );
   for ( size_t i = 0; i < objects_.size(); ++i )
      if ( board_.objects[i].kind == kind ) {
         objects_[i].record.isUnreadable( fault, now );
         objects_[i].tried = true;
         objects_[i].due = false;
         refuse( i );
      }
}

// All kinds have the one connection, and the one topology.
void Supervisor::failConnection( const Fault &fault, Time now ) {
   for ( const auto &[kind, state] : kinds_ )
      if ( !state.ready )
         failKind( kind, fault, now );
}

std::optional<std::string> Supervisor::overdue( Time now ) const {
   if ( !inHand_ )
      return {};
   const bool isInit = std::holds_alternative<InitCommand>( inHand_->command );
   const auto limit = isInit ? limits_.init : limits_.step;
   if ( now - inHand_->since < limit )
      return {};
   return fmt::format( "{}{}{} did not come back within {:g} s", isInit ? waitingWords : "",
                       isInit ? ": " : "", inHand_->operation, seconds( limit ) );
}

void Supervisor::tick( Time now ) {
   const auto *init = inHand_ ? std::get_if<InitCommand>( &inHand_->command ) : nullptr;
   if ( !init || now - inHand_->since < limits_.patience )
      return;
   const Fault fault{ .words = fmt::format( "{}: pl_{}_init is trying", waitingWords,
                                            nameOf( init->kind ) ) };
   for ( Object &object : objects_ )
      if ( !object.stands && object.notBefore <= now ) // what waits for itself has its own fault
         object.record.isUnreadable( fault, now );
}

Time Supervisor::wakeAt( Time now ) const {
   Time wake = now + limits_.period;
   const auto at = [&]( Time time ) {
      if ( time > now )
         wake = std::min( wake, time );
   };
   if ( inHand_ ) {
      const bool isInit = std::holds_alternative<InitCommand>( inHand_->command );
      at( inHand_->since + limits_.patience );
      at( inHand_->since + ( isInit ? limits_.init : limits_.step ) );
   }
   at( childNotBefore_ );
   for ( const auto &[kind, state] : kinds_ ) {
      at( state.notBefore );
      at( state.nextRound );
   }
   for ( const Object &object : objects_ )
      at( object.notBefore );
   return wake;
}

BoardReport Supervisor::report( Time now ) const {
   BoardReport board;
   for ( size_t i = 0; i < objects_.size(); ++i ) {
      const auto staleAfter = limits_.once
                                 ? Clock::duration::max()
                                 : limits_.staleAfter * limits_.periodOf( board_.objects[i].kind );
      board.push_back( objects_[i].record.report( board_.objects[i], staleAfter, now ) );
   }
   return board;
}

size_t Supervisor::settled() const {
   return static_cast<size_t>( std::count_if(
      objects_.begin(), objects_.end(), []( const Object &object ) { return object.tried; } ) );
}

bool Supervisor::roundDone() const {
   return !inHand_ && settled() == objects_.size() &&
          std::none_of( objects_.begin(), objects_.end(),
                        []( const Object &object ) { return object.due; } );
}

std::string Supervisor::inHand() const { return inHand_ ? inHand_->operation : std::string(); }

} // namespace Host
