#include "host/session/ModuleTurns.h"

#include <algorithm>

namespace Host {
namespace {

using namespace std::chrono_literals;

// From power on to the first monitor reading: t_data of SFF-8472, t_init of SFF-8636 and MgmtInit
// of CMIS.
constexpr Clock::duration startOfSfp = 1s, startOfQsfp = 2s;

constexpr Clock::duration soon = 1s;

} // namespace

ModuleTurns::ModuleTurns( const BoardFiles::Board &board, const Limits &limits )
   : limits_( limits ) {
   std::map<std::string, size_t> cages;
   for ( size_t i = 0; i < board.objects.size(); ++i )
      if ( board.objects[i].kind == BoardFiles::Kind::Xcvr )
         cages[board.objects[i].name] = i;
   for ( size_t i = 0; i < board.objects.size(); ++i ) {
      const BoardFiles::ObjectDescription &object = board.objects[i];
      if ( object.kind != BoardFiles::Kind::Module )
         continue;
      modules_[i] = { .number = objects_.size(), .isSfp = !object.second.empty() };
      objects_.push_back( i );
      if ( const auto cage = cages.find( object.health.in.value_or( "" ) ); cage != cages.end() )
         inCage_[cage->second] = i;
   }
}

std::optional<size_t> ModuleTurns::moduleIn( size_t cage ) const {
   const auto module = inCage_.find( cage );
   return module == inCage_.end() ? std::nullopt : std::optional( module->second );
}

void ModuleTurns::childStarted() {
   for ( auto &[object, module] : modules_ )
      module.isFresh = true;
}

// A module that was there from the beginning has started long ago.
bool ModuleTurns::presenceIs( size_t object, bool isThere, Time now ) {
   Module &module = modules_.at( object );
   if ( module.isThere == isThere )
      return false;
   if ( isThere ) {
      module.next = module.isThere ? now + ( module.isSfp ? startOfSfp : startOfQsfp ) : now;
      module.isFresh = true;
      module.misses = 0;
   }
   module.isThere = isThere;
   return true;
}

bool ModuleTurns::isDue( size_t object, Time now ) const { return now >= next( object ); }

Time ModuleTurns::next( size_t object ) const {
   const Module &module = modules_.at( object );
   return module.isThere == true ? module.next : Time::max();
}

void ModuleTurns::wasRead( size_t object, Time now ) {
   Module &module = modules_.at( object );
   module.misses = 0;
   module.isFresh = false;
   module.next = nextTurn( module, now );
}

bool ModuleTurns::wasMissed( size_t object, Time now ) {
   Module &module = modules_.at( object );
   module.misses = std::min( module.misses + 1, missesAtMost );
   const bool isBusy = module.misses < missesAtMost;
   module.isFresh |= !isBusy;
   module.next = isBusy ? std::min( now + soon, nextTurn( module, now ) ) : nextTurn( module, now );
   return !isBusy;
}

// Each has its own part of the period. What was read late is not read again at once.
Time ModuleTurns::nextTurn( const Module &module, Time now ) const {
   const auto period = limits_.periodOf( BoardFiles::Kind::Module );
   const auto count = static_cast<Clock::rep>( modules_.size() );
   const auto own = period * static_cast<Clock::rep>( module.number ) / count;
   const auto since = now.time_since_epoch() + period / 4 - own;
   return Time( ( since / period + 1 ) * period + own );
}

} // namespace Host
