#pragma once

#include "host/State.h"

#include <map>
#include <string>
#include <vector>

namespace Host {

// What a log says of a board: what has changed, with few lines. An object whose values are all in
// one state has one entry. Where they differ, each value that is not ok has one, too. All that came
// to the same state at the same time share a line.
class StateLog {
 public:
   struct Line {
      bool isFault; // something can't be read
      std::string text;
   };

   // The changes since the last call. Before every object was read once, only faults are told.
   std::vector<Line> changes( const BoardReport &board, bool wasRead );

 private:
   std::map<std::string, std::string> entries_{}; // by "OBJECT" or "OBJECT VALUE"
};

} // namespace Host
