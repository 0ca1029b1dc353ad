#pragma once

#include "boardfiles/Board.h"
#include "health/Event.h"
#include "health/Inspection.h"
#include "health/Instant.h"
#include "health/State.h"

#include <optional>
#include <string>
#include <vector>

namespace Health {

// Notes which module was taken out of a cage and which was plugged, once it is known which it is.
class ModuleChanges {
 public:
   // Both must outlive this object.
   ModuleChanges( const BoardFiles::Board &board, const Links &links )
      : board_( board ), links_( links ), cages_( board.objects.size() ) {}

   // Returns the objects of those that were taken out.
   std::vector<size_t> add( const BoardReport &report, const Instant &now,
                            std::vector<Event> &events );

 private:
   struct Cage {
      std::optional<bool> isThere{}; // as it was told last
      std::string identity{};
   };

   const BoardFiles::Board &board_;
   const Links &links_;
   std::vector<Cage> cages_; // by the objects of their modules
};

} // namespace Health
