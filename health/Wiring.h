// Which part of a board's wiring keeps an object from being read.
#pragma once

#include "boardfiles/Board.h"
#include "health/Evidence.h"
#include "health/Finding.h"

#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace Health {

// What came of the last attempt to read an object.
enum class Reach { NotRead, Good, Failed, Absent };

class Wiring {
 public:
   // `board` must outlive this object.
   explicit Wiring( const BoardFiles::Board &board ) : board_( board ) {}

   // One for each object. Evidence: null when the server gives none.
   void look( std::span<const Reach> objects, const Evidence *evidence );

   // The bus, the multiplexer or the chip because of which the object can't be read; without
   // evidence all of them that it may be, in one finding. Nothing when it isn't the wiring.
   std::optional<Finding> explain( size_t object ) const;

 private:
   using Place = BoardFiles::ChipPlace;
   struct Chip {
      bool isSilent = true;        // nothing of it can be read
      std::vector<size_t> objects; // that are read from it
   };

   const BusEvidence *evidenceOf( const std::string &bus ) const;
   const ChipEvidence *evidenceOf( const Place &place ) const;
   bool areSilent( const std::string &bus, const std::string &path, size_t atLeast ) const;
   std::optional<Finding> busOf( const Place &chip ) const;
   std::optional<Finding> segmentOf( const Place &chip ) const;
   std::optional<Finding> muxBefore( const Place &chip ) const;
   Finding silent( const Place &chip, const std::string &how ) const;
   Finding guess( const Place &chip ) const;

   const BoardFiles::Board &board_;
   const Evidence *evidence_ = nullptr;
   std::map<Place, Chip> chips_{}; // without those of absent modules
};

} // namespace Health
