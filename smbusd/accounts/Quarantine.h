// Segments of a root bus that are left alone for a while, since a line there is held or what goes
// through them keeps running out of time.
#pragma once

#include "smbus/Clock.h"
#include "smbus/Control.pb.h"
#include "smbus/SegmentPath.h"

#include <compare>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Smbusd {

// A segment is tried again by the first request that comes when its time is over: after a second,
// then after twice as long as before, up to a limit. A try that takes long comes less often, so
// that the others have the bus for most of the time. As soon as something answers there, it is used
// again. While the multiplexer that joins a held segment can't be released, nothing passes on the
// whole bus. Only the thread that has the bus changes it or asks it; all() is for any thread.
class Quarantine {
 public:
   using Time = Bus::Clock::Time;

   static constexpr Time firstPause = std::chrono::seconds( 1 );
   static constexpr Time usualPause = std::chrono::seconds( 4 ); // at most, if tries are short
   static constexpr Time longestPause = std::chrono::seconds( 60 );
   static constexpr int timesLonger = 8; // than the try
   // Transactions in a row that run out of time.
   static constexpr unsigned tooLate = 3;

   struct Segment {
      Bus::SegmentPath path{};
      bool isWholeBus = false; // the root bus is held, or the way to it by a joined segment
      std::string reason{};    // how the last transfer failed
      Time since{ 0 };
      Time next{ 0 }; // when it is tried again

      SmbusControl::Quarantined told( Time now ) const; // without the bus
   };

   // The name of the bus, for the log.
   explicit Quarantine( std::string bus ) : bus_( std::move( bus ) ) {}

   // Why nothing may go through the segment now; nothing where it may, also as a try.
   std::optional<std::string> refusal( const Bus::SegmentPath &path, Time now ) const;
   // The same of the whole bus.
   std::optional<std::string> refusalOfAll( Time now ) const;
   bool isHere( const Bus::SegmentPath &path ) const { return segments_.contains( path ); }
   // Whether it matters that a segment answers.
   bool isWatching() const { return !segments_.empty() || !late_.empty(); }

   // How a transaction failed that began and has ended.
   struct Failure {
      std::string reason{};
      Time begun{ 0 };
      Time ended{ 0 };
   };
   // A line is held there.
   void isHeld( const Bus::SegmentPath &path, const Failure &failure ) { put( path, failure ); }
   // A transaction ran out of time there.
   void isLate( const Bus::SegmentPath &path, const Failure &failure );
   // Something there answered, be it with an error.
   void answers( const Bus::SegmentPath &path );
   // The multiplexer that joins the segment to the root bus doesn't let go of it.
   void isJoined( const Bus::SegmentPath &path, const Failure &failure );
   void isReleased();
   bool waitsForRelease() const { return joined_.has_value(); }

   // Also those whose time is over, until they have been tried.
   std::vector<Segment> all() const;

 private:
   struct Entry {
      std::string reason{};
      Time since{ 0 };
      Time next{ 0 };
      Time pause{ 0 };
      void fails( const Failure &failure );
      Segment segment( const Bus::SegmentPath &path, bool isWholeBus ) const;
   };
   struct Joined {
      Bus::SegmentPath path{};
      Entry entry{};
   };
   void put( const Bus::SegmentPath &path, const Failure &failure );

   const std::string bus_;
   mutable std::mutex mutex_; // of changes, and of all()
   std::map<Bus::SegmentPath, Entry> segments_{};
   std::optional<Joined> joined_{};
   std::map<Bus::SegmentPath, unsigned> late_{}; // how many transactions in a row
};

} // namespace Smbusd
