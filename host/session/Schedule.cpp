#include "host/session/Schedule.h"

#include "host/session/ReadGroups.h"

#include <algorithm>

namespace Host {
namespace {

// Where everything is read just once, of an object that ends the child. With four tries, one lost
// acknowledge in 50 loses an object of two transfers once in 400,000 times.
constexpr unsigned triesAtMost = 4;

} // namespace

Schedule::Schedule( const BoardFiles::Board &board, const Limits &limits, Time now )
   : board_( board ), limits_( limits ), groups_( readGroups( board.objects ) ),
     modules_( board, limits ), objects_( board.objects.size() ) {
   for ( size_t i = 0; i < objects_.size(); ++i ) {
      if ( !needs( i ) )
         objects_[i].backOff.giveUp();
      else if ( kinds_.emplace( board.objects[i].kind, Kind{ .nextRound = now } ).second )
         kindOrder_.push_back( board.objects[i].kind );
   }
}

// Whether an object is brought up at all. The first object of a did makes the driver object for all
// of them. The system object may use any device, so it needs all objects before it.
bool Schedule::needs( size_t object ) const {
   if ( !limits_.only || object == *limits_.only )
      return true;
   const auto did = board_.objects[*limits_.only].did;
   return object < *limits_.only && ( !did || board_.objects[object].did == did );
}

void Schedule::backOff( BackOff &of, Time now ) const {
   if ( limits_.once )
      of.giveUp();
   else
      of.failed( now );
}

void Schedule::childStarted() {
   loaded_ = false;
   for ( auto &[name, kind] : kinds_ )
      kind.ready = false;
   for ( Object &object : objects_ )
      object.up = false;
   modules_.childStarted();
}

void Schedule::kindReady( BoardFiles::Kind kind ) {
   kinds_[kind].ready = true;
   kinds_[kind].backOff.succeeded();
}

void Schedule::kindFailed( BoardFiles::Kind kind, Time now ) {
   kinds_[kind].ready = false;
   backOff( kinds_[kind].backOff, now );
   for ( size_t i = 0; i < objects_.size(); ++i )
      if ( board_.objects[i].kind == kind ) {
         objects_[i].tried = true;
         objects_[i].pending = objects_[i].again = false;
      }
}

void Schedule::objectUp( size_t object ) {
   objects_[object].up = objects_[object].tried = true;
   // A module waits for what its cage says.
   objects_[object].pending = !limits_.only && ( limits_.once || !modules_.isModule( object ) );
   objects_[object].again = false;
}

void Schedule::objectRead( size_t object, bool again ) {
   objects_[object].pending = again;
   objects_[object].backOff.succeeded();
}

bool Schedule::modulePresenceIs( size_t module, bool isThere, Time now ) {
   if ( !isThere )
      objects_[module].pending = false;
   return modules_.presenceIs( module, isThere, now );
}

void Schedule::moduleRead( size_t module, Time now ) {
   modules_.wasRead( module, now );
   objectRead( module );
}

bool Schedule::moduleMissed( size_t module, Time now ) {
   const bool isMissing = modules_.wasMissed( module, now );
   objectRead( module, limits_.once && !isMissing );
   return isMissing;
}

void Schedule::objectFailed( size_t object, Time now ) {
   Object &failed = objects_[object];
   failed.tried = true;
   failed.up = failed.pending = false;
   backOff( failed.backOff, now );
}

void Schedule::objectEndedChild( size_t object, Time now ) {
   Object &ended = objects_[object];
   if ( !limits_.once || ++ended.deaths == triesAtMost ) {
      objectFailed( object, now );
      return;
   }
   ended.up = ended.tried = ended.pending = false;
   ended.again = true;
}

// First comes what brings objects up, then readings. What a user asks for goes before both as soon
// as its object is up.
std::optional<Command> Schedule::next( const PendingActions &actions, Time now ) {
   if ( !loaded_ )
      return LoadCommand{ {}, board_.topology };
   for ( const BoardFiles::Kind kind : kindOrder_ )
      if ( !kinds_[kind].ready && kinds_[kind].backOff.mayTry( now ) )
         return InitCommand{ kind };
   if ( auto action = actions.next( [this]( size_t object ) { return isUp( object ); } ) )
      return action;
   for ( size_t i = 0; i < objects_.size(); ++i )
      if ( wantsAdd( i, now ) )
         return AddCommand{ i, board_.objects[i] };
   startRounds( now );
   if ( auto read = nextRead( now ) )
      return read;
   for ( size_t i = 0; i < objects_.size(); ++i )
      if ( objects_[i].again && canAdd( i, now ) )
         return AddCommand{ i, board_.objects[i] };
   return {};
}

bool Schedule::canAdd( size_t object, Time now ) const {
   const Object &wanted = objects_[object];
   return !wanted.up && wanted.backOff.mayTry( now ) && isReady( board_.objects[object].kind );
}

bool Schedule::wantsAdd( size_t object, Time now ) const {
   if ( !canAdd( object, now ) )
      return false;
   // Where one reading is enough, an object that was read isn't needed in the next child.
   const Object &wanted = objects_[object];
   return !limits_.once || ( !wanted.tried && !wanted.again ) || wanted.pending;
}

void Schedule::startRounds( Time now ) {
   if ( limits_.once || limits_.only )
      return;
   for ( auto &[name, kind] : kinds_ ) {
      if ( now < kind.nextRound )
         continue;
      kind.nextRound = now + limits_.periodOf( name );
      rounds_ += name != BoardFiles::Kind::Module;
      for ( size_t i = 0; i < objects_.size(); ++i )
         if ( board_.objects[i].kind == name && !modules_.isModule( i ) )
            objects_[i].pending = objects_[i].up;
   }
   for ( const size_t module : modules_.objects() )
      objects_[module].pending = objects_[module].up && modules_.isDue( module, now );
}

// Starts behind the object that was read last. Else, where a round takes longer than a period, the
// last objects would never be read.
std::optional<Command> Schedule::nextRead( Time now ) {
   for ( size_t k = 0; k < objects_.size(); ++k ) {
      const size_t i = ( nextRead_ + k ) % objects_.size();
      if ( isDue( i, now ) ) {
         nextRead_ = i + 1;
         ReadCommand read{ dueOfGroup( i, now ), {} };
         if ( modules_.isModule( i ) && modules_.isFresh( i ) )
            read.fresh = { i };
         return read;
      }
   }
   nextRead_ = 0;
   return {};
}

bool Schedule::isDue( size_t object, Time now ) const {
   return objects_[object].up && objects_[object].pending &&
          ( !modules_.isModule( object ) || modules_.mayBeRead( object, now ) );
}

std::vector<size_t> Schedule::dueOfGroup( size_t object, Time now ) const {
   std::vector<size_t> due = { object };
   for ( size_t i = 0; i < objects_.size(); ++i )
      if ( i != object && groups_[i] == groups_[object] && isDue( i, now ) )
         due.push_back( i );
   return due;
}

Time Schedule::wakeAt( Time now ) const {
   Time wake = now + limits_.period;
   const auto at = [&]( Time time ) {
      if ( time > now )
         wake = std::min( wake, time );
   };
   for ( const auto &[name, kind] : kinds_ ) {
      at( kind.backOff.nextTry() );
      at( kind.nextRound );
   }
   for ( const size_t module : modules_.objects() )
      at( modules_.next( module ) );
   for ( const Object &object : objects_ )
      at( object.backOff.nextTry() );
   return wake;
}

bool Schedule::isReady( BoardFiles::Kind kind ) const {
   const auto found = kinds_.find( kind );
   return found != kinds_.end() && found->second.ready;
}

bool Schedule::isBackingOff( size_t object, Time now ) const {
   return !objects_[object].up && !objects_[object].backOff.mayTry( now );
}

bool Schedule::mustWait( size_t object, Time now ) const {
   const auto kind = kinds_.find( board_.objects[object].kind );
   const bool kindWaits = kind != kinds_.end() && !kind->second.backOff.mayTry( now );
   return isBackingOff( object, now ) || ( !isUp( object ) && kindWaits );
}

size_t Schedule::settled() const {
   return static_cast<size_t>( std::count_if(
      objects_.begin(), objects_.end(), []( const Object &object ) { return object.tried; } ) );
}

// The modules have turns of their own, unless each is read once.
bool Schedule::roundDone() const {
   if ( settled() != objects_.size() )
      return false;
   for ( size_t i = 0; i < objects_.size(); ++i )
      if ( objects_[i].pending && ( limits_.once || !modules_.isModule( i ) ) )
         return false;
   return true;
}

} // namespace Host
