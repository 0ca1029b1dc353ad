#include "smbusd/server/Turns.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <system_error>
#include <tuple>

namespace Smbusd {

bool Turns::begin( const Peer &peer, Time now ) {
   Waiter waiter{ peer };
   {
      const std::lock_guard lock( mutex_ );
      if ( stopped_ )
         return false;
      if ( !since_ ) {
         since_ = now;
         running_ = peer;
         return true;
      }
      waiter.wake = eventfd( 0, EFD_CLOEXEC );
      if ( waiter.wake < 0 )
         throw std::system_error( errno, std::generic_category(), "can't wait for the bus" );
      arrives( peer );
      waiting_.push_back( &waiter );
   }
   const bool granted = waitFor( waiter );
   close( waiter.wake );
   return granted;
}

// Until the turn, or the end of the connection, or of all turns.
bool Turns::waitFor( Waiter &waiter ) {
   pollfd watched[] = { { waiter.wake, POLLIN, 0 }, { waiter.peer.socket, POLLRDHUP, 0 } };
   while ( poll( watched, 2, -1 ) < 0 ) {
   }
   const std::lock_guard lock( mutex_ );
   waiting_.remove( &waiter );
   const bool gone = watched[1].revents != 0;
   if ( waiter.granted && ( gone || stopped_ ) )
      grantNext();
   return waiter.granted && !gone && !stopped_;
}

void Turns::end() {
   const std::lock_guard lock( mutex_ );
   if ( !waiting_.empty() ) {
      const Time took = clock_.now() - *since_;
      User &user = users_[running_.user];
      user.used += took;
      user.processes[running_.process] += took;
   }
   grantNext();
}

// One who comes back must not get the time that he left to the others.
void Turns::arrives( const Peer &peer ) {
   const auto [user, isNew] = users_.try_emplace( peer.user );
   user->second.used = std::max( user->second.used, least_ );
   Time &process = user->second.processes[peer.process];
   process = std::max( process, user->second.least );
}

void Turns::grantNext() {
   since_.reset();
   const auto rank = [this]( const Waiter *waiter ) {
      const User &user = users_.at( waiter->peer.user );
      return std::tuple( user.used, user.processes.at( waiter->peer.process ) );
   };
   const auto next = std::min_element(
      waiting_.begin(), waiting_.end(),
      [&]( const Waiter *one, const Waiter *other ) { return rank( one ) < rank( other ); } );
   if ( stopped_ || next == waiting_.end() ) {
      users_.clear();
      least_ = Time( 0 );
      idle_.notify_all();
      return;
   }
   Waiter &chosen = **next;
   waiting_.erase( next );
   User &user = users_.at( chosen.peer.user );
   least_ = user.used;
   user.least = user.processes.at( chosen.peer.process );
   running_ = chosen.peer;
   since_ = clock_.now();
   chosen.granted = true;
   eventfd_write( chosen.wake, 1 );
}

std::optional<Turns::Time> Turns::busySince() const {
   const std::lock_guard lock( mutex_ );
   return since_;
}

size_t Turns::waiting() const {
   const std::lock_guard lock( mutex_ );
   return waiting_.size();
}

void Turns::stop() {
   const std::lock_guard lock( mutex_ );
   stopped_ = true;
   for ( const Waiter *waiter : waiting_ )
      eventfd_write( waiter->wake, 1 );
}

bool Turns::idleBy( std::chrono::steady_clock::time_point end ) const {
   std::unique_lock lock( mutex_ );
   return idle_.wait_until( lock, end, [this] { return !since_; } );
}

} // namespace Smbusd
