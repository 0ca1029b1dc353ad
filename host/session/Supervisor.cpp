#include "session/Supervisor.h"

#include <algorithm>
#include <fmt/format.h>
#include <pl.h>

namespace Host {
namespace {

constexpr auto waitingWords = "can't reach the SMBus server yet";

double seconds( Clock::duration duration ) {
   return std::chrono::duration<double>( duration ).count();
}

} // namespace

Supervisor::Supervisor( const Board &board, Limits limits, Time now )
   : board_( board ), limits_( limits ), words_( board.faultTraces ),
     objects_( board.objects.size(), Object{ .record = ObjectRecord( now ) } ), nextRound_( now ) {
   for ( const ObjectDescription &object : board.objects )
      if ( kinds_.emplace( object.kind, KindState{} ).second )
         kindOrder_.push_back( object.kind );
}

void Supervisor::childStarted() {
   loaded_ = false;
   for ( auto &[kind, state] : kinds_ )
      state.ready = false;
   for ( Object &object : objects_ )
      object.stands = false;
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

// First everything that brings objects up, then readings.
std::optional<Command> Supervisor::choose( Time now ) {
   if ( !loaded_ )
      return LoadCommand{ {}, board_.topology };
   for ( const Kind kind : kindOrder_ )
      if ( const KindState &state = kinds_[kind]; !state.ready && state.notBefore <= now )
         return InitCommand{ kind };
   for ( std::size_t i = 0; i < objects_.size(); ++i )
      if ( wantsAdd( objects_[i], board_.objects[i].kind, now ) )
         return AddCommand{ i, board_.objects[i] };
   startRound( now );
   for ( std::size_t i = 0; i < objects_.size(); ++i )
      if ( objects_[i].stands && objects_[i].due )
         return ReadCommand{ i };
   return {};
}

bool Supervisor::wantsAdd( const Object &object, Kind kind, Time now ) const {
   if ( object.stands || object.notBefore > now || !kinds_.at( kind ).ready )
      return false;
   // Read once is enough: such an object isn't needed again after a child's death.
   return !limits_.once || !object.tried || object.due;
}

void Supervisor::startRound( Time now ) {
   if ( limits_.once || now < nextRound_ )
      return;
   nextRound_ = now + limits_.period;
   for ( Object &object : objects_ )
      object.due = object.stands;
}

void Supervisor::heard( const Event &event, Time now ) {
   if ( const auto *trace = std::get_if<Trace>( &event ) )
      words_.heard( *trace );
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

void Supervisor::done( const LoadCommand &, const Done &done, Time ) {
   loaded_ = !done.fault;
   loadFault_ = done.fault;
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
      fail( object, fault, now );
      return;
   }
   object.stands = object.tried = object.due = true;
   object.record.isFine( now );
}

void Supervisor::done( const ReadCommand &command, const Done &done, Time now ) {
   Object &object = objects_[command.object];
   object.due = false;
   if ( done.fault ) {
      fail( object, *done.fault, now );
      return;
   }
   object.record.isFine( now );
   object.backOff.succeeded();
}

void Supervisor::take( const Reading &reading, Time now ) {
   const auto *command = std::get_if<ReadCommand>( &inHand_->command );
   if ( !command )
      return;
   Reading known = reading;
   // That a module is absent counts only when the bus was in order.
   if ( known.state == State::Absent && words_.sawFault() )
      known.state = State::Unreadable;
   if ( known.state == State::Unreadable && known.fault.words.empty() )
      known.fault.words = words_.words();
   objects_[command->object].record.take( known, now );
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
      fail( objects_[add->object], fault, now );
   else if ( const auto *read = std::get_if<ReadCommand>( &command ) )
      fail( objects_[read->object], fault, now );
   else if ( std::holds_alternative<InitCommand>( command ) )
      failConnection( fault, now );
   else
      loadFault_ = fault;
}

void Supervisor::fail( Object &object, const Fault &fault, Time now ) {
   object.record.isUnreadable( fault, now );
   object.tried = true;
   object.stands = object.due = false;
   object.notBefore = limits_.once ? Time::max() : object.backOff.failed( now );
}

void Supervisor::failKind( Kind kind, const Fault &fault, Time now ) {
   KindState &state = kinds_[kind];
   state.notBefore = limits_.once ? Time::max() : state.backOff.failed( now );
   for ( std::size_t i = 0; i < objects_.size(); ++i )
      if ( board_.objects[i].kind == kind ) {
         objects_[i].record.isUnreadable( fault, now );
         objects_[i].tried = true;
         objects_[i].due = false;
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
   at( nextRound_ );
   at( childNotBefore_ );
   for ( const auto &[kind, state] : kinds_ )
      at( state.notBefore );
   for ( const Object &object : objects_ )
      at( object.notBefore );
   return wake;
}

BoardReport Supervisor::report( Time now ) const {
   const auto staleAfter =
      limits_.once ? Clock::duration::max() : limits_.staleAfter * limits_.period;
   BoardReport board;
   for ( std::size_t i = 0; i < objects_.size(); ++i )
      board.push_back( objects_[i].record.report( board_.objects[i], staleAfter, now ) );
   return board;
}

std::size_t Supervisor::settled() const {
   return static_cast<std::size_t>( std::count_if(
      objects_.begin(), objects_.end(), []( const Object &object ) { return object.tried; } ) );
}

bool Supervisor::roundDone() const {
   return !inHand_ && settled() == objects_.size() &&
          std::none_of( objects_.begin(), objects_.end(),
                        []( const Object &object ) { return object.due; } );
}

std::string Supervisor::inHand() const { return inHand_ ? inHand_->operation : std::string(); }

} // namespace Host
