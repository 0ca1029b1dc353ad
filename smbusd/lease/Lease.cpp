#include "smbusd/lease/Lease.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <algorithm>

namespace Smbusd {

SmbusControl::LeaseState Lease::take( const SmbusControl::Lease &lease, const Peer &peer ) {
   const std::chrono::milliseconds time( long( lease.milliseconds() ) );
   if ( time == std::chrono::milliseconds( 0 ) || time > longest )
      throw LeaseError( fmt::format( "a lease of {} ms is not within 1 ms and {} s", time.count(),
                                     Bus::secondsIn( longest ) ) );
   Held held{ .writes = safeWritesIn( lease ),
              .done = std::vector<bool>( static_cast<size_t>( lease.write_size() ) ),
              .process = peer.process };
   const std::lock_guard carrying( carrying_ );
   const std::lock_guard lock( mutex_ );
   const bool ran = held_ && held_->ran;
   if ( !held_ )
      spdlog::info( "process {} has taken the lease of the board: {} writes after {:.1f} s without "
                    "a renewal",
                    peer.process, held.writes.size(), Bus::secondsIn( time ) );
   else if ( ran )
      spdlog::info( "process {} has renewed the lease of the board again", peer.process );
   held.until = clock_.now() + time;
   held_ = std::move( held );
   changed_.notify_all();
   return describe( ran );
}

SmbusControl::LeaseState Lease::state() const {
   const std::lock_guard lock( mutex_ );
   return describe( held_ && held_->ran );
}

SmbusControl::LeaseState Lease::describe( bool ran ) const {
   SmbusControl::LeaseState state;
   if ( !held_ )
      return state;
   state.set_held( true );
   state.set_process( static_cast<uint32_t>( held_->process ) );
   state.set_seconds( Bus::secondsIn( held_->until - clock_.now() ) );
   state.set_ran( ran );
   state.set_writes( static_cast<uint32_t>( held_->writes.size() ) );
   state.set_done(
      static_cast<uint32_t>( std::count( held_->done.begin(), held_->done.end(), true ) ) );
   state.set_error( held_->error );
   return state;
}

// When something is to do next; nothing: never, as it is now.
std::optional<Lease::Time> Lease::due() const {
   if ( !held_ || std::find( held_->done.begin(), held_->done.end(), false ) == held_->done.end() )
      return {};
   return held_->nextTry.value_or( held_->until );
}

std::optional<Lease::Time> Lease::work() {
   for ( size_t i = 0;; ++i ) {
      const std::lock_guard carrying( carrying_ );
      std::optional<SafeWrite> write;
      {
         const std::lock_guard lock( mutex_ );
         const auto next = due();
         if ( !next || ( i == 0 && clock_.now() < *next ) || clock_.now() < held_->until )
            return next;
         if ( !held_->ran )
            spdlog::error( "nobody has renewed the lease of the board: its safe state is set" );
         held_->ran = true;
         if ( i == 0 )
            held_->nextTry = clock_.now() + pause;
         while ( i < held_->writes.size() && held_->done[i] )
            ++i;
         if ( i == held_->writes.size() )
            return due();
         write = held_->writes[i];
      }
      const std::string error = carryOut_( *write );
      const std::lock_guard lock( mutex_ );
      held_->done[i] = error.empty();
      if ( error.empty() )
         spdlog::warn( "the safe state: {}", toText( *write ) );
      else if ( error != held_->error )
         spdlog::error( "the safe state, {}: {}; it is tried again until it is acknowledged",
                        toText( *write ), error );
      held_->error = error;
   }
}

void Lease::run() {
   for ( ;; ) {
      const auto next = work();
      std::unique_lock lock( mutex_ );
      const auto wakes = [&] { return stopped_ || due() != next; };
      if ( next )
         changed_.wait_for( lock, std::max( *next - clock_.now(), Time( 0 ) ), wakes );
      else
         changed_.wait( lock, wakes );
      if ( stopped_ )
         return;
   }
}

void Lease::stop() {
   const std::lock_guard lock( mutex_ );
   stopped_ = true;
   changed_.notify_all();
}

} // namespace Smbusd
