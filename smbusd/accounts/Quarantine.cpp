#include "smbusd/accounts/Quarantine.h"

#include "smbus/BusLoads.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <algorithm>

namespace Smbusd {

namespace {

constexpr size_t mostLateSegments = 256;

} // namespace

void Quarantine::Entry::fails( const Failure &failure ) {
   if ( pause == Time( 0 ) )
      since = failure.ended;
   pause = pause == Time( 0 ) ? firstPause : std::min( 2 * pause, usualPause );
   const Time forOthers = std::min( timesLonger * ( failure.ended - failure.begun ), longestPause );
   next = failure.ended + std::max( pause, forOthers );
   reason = failure.reason;
}

SmbusControl::Quarantined Quarantine::Segment::told( Time now ) const {
   SmbusControl::Quarantined to;
   to.set_path( toText( path ) );
   to.set_whole_bus( isWholeBus );
   to.set_reason( reason );
   to.set_seconds( Bus::secondsIn( now - since ) );
   to.set_next( std::max( 0.0, Bus::secondsIn( next - now ) ) );
   return to;
}

Quarantine::Segment Quarantine::Entry::segment( const Bus::SegmentPath &path,
                                                bool isWholeBus ) const {
   return { path, isWholeBus, reason, since, next };
}

std::optional<std::string> Quarantine::refusal( const Bus::SegmentPath &path, Time now ) const {
   const auto found = segments_.find( path );
   if ( found == segments_.end() || now >= found->second.next )
      return {};
   return Bus::describe( found->second.segment( path, path.empty() ).told( now ) );
}

std::optional<std::string> Quarantine::refusalOfAll( Time now ) const {
   if ( joined_ && now < joined_->entry.next )
      return Bus::describe( joined_->entry.segment( joined_->path, true ).told( now ) );
   static const Bus::SegmentPath root;
   return segments_.empty() ? std::nullopt : refusal( root, now );
}

void Quarantine::put( const Bus::SegmentPath &path, const Failure &failure ) {
   if ( !isHere( path ) )
      spdlog::warn( "{} is left alone for a while{}{}: {}", bus_, path.empty() ? "" : " behind ",
                    toText( path ), failure.reason );
   const std::lock_guard lock( mutex_ );
   segments_[path].fails( failure );
}

void Quarantine::isLate( const Bus::SegmentPath &path, const Failure &failure ) {
   if ( late_.size() == mostLateSegments )
      late_.clear();
   if ( ++late_[path] >= tooLate || isHere( path ) )
      put( path, failure );
}

void Quarantine::answers( const Bus::SegmentPath &path ) {
   if ( !late_.empty() )
      late_.erase( path );
   if ( segments_.empty() || !isHere( path ) )
      return;
   spdlog::info( "{} answers again{}{}", bus_, path.empty() ? "" : " behind ", toText( path ) );
   const std::lock_guard lock( mutex_ );
   segments_.erase( path );
}

void Quarantine::isJoined( const Bus::SegmentPath &path, const Failure &failure ) {
   if ( !joined_ )
      spdlog::warn( "{} can't be used: its multiplexer {:#04x} doesn't release {}: {}", bus_,
                    path.front().mux, toText( path ), failure.reason );
   const std::lock_guard lock( mutex_ );
   if ( !joined_ )
      joined_ = Joined{ path, {} };
   joined_->entry.fails( failure );
}

void Quarantine::isReleased() {
   spdlog::info( "{} is released from {}", bus_, toText( joined_->path ) );
   const std::lock_guard lock( mutex_ );
   joined_.reset();
}

std::vector<Quarantine::Segment> Quarantine::all() const {
   const std::lock_guard lock( mutex_ );
   std::vector<Segment> list;
   if ( joined_ )
      list.push_back( joined_->entry.segment( joined_->path, true ) );
   for ( const auto &[path, entry] : segments_ )
      if ( !joined_ || joined_->path != path )
         list.push_back( entry.segment( path, path.empty() ) );
   return list;
}

} // namespace Smbusd
