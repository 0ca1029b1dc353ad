#pragma once

#include <cstddef>
#include <map>

namespace Host {

// Decides when a slot without a presence pin is empty. Nothing but missing acknowledges tells that
// a module is gone, and a chip that is there misses one now and then. So a slot whose module missed
// one is read again, and is empty when the module missed many reads in a row, in more than one
// round.
//
// How many: with two slots read every second, a day has 172,800 reads. Where one acknowledge in 50
// gets lost, a read misses its first one in 1 of 50 cases, and ten in a row happen once in 10^17.
// Where the plug-in's data doesn't say which transfer is the first of a read, each of its transfers
// counts. With the eight of an FRU memory, one read in 6.7 is missed, and ten in a row 0.001 times
// a day.
class AbsenceCheck {
 public:
   static constexpr unsigned readsInARound = 5, rounds = 2;
   static constexpr unsigned readsInAll = readsInARound * rounds;

   // Where there is only one round, all reads are in it.
   explicit AbsenceCheck( bool isOneRound ) : isOneRound_( isOneRound ) {}

   // The module did not acknowledge the first transfer of a read.
   void missed( size_t slot );
   // It did not acknowledge a later transfer, so it was there just before.
   void missedLater( size_t slot );
   // It was read.
   void answered( size_t slot ) { slots_.erase( slot ); }
   // The bus failed, which tells nothing of the module.
   void failed( size_t slot );

   bool isAbsent( size_t slot ) const;
   // Whether the slot is to be read again in this round.
   bool wantsAnotherRead( size_t slot ) const;

 private:
   struct Slot {
      unsigned reads = 0;  // failed ones in a row
      unsigned misses = 0; // of the first transfer in a row
   };

   bool isOneRound_;
   std::map<size_t, Slot> slots_{}; // those whose last read failed
};

} // namespace Host
