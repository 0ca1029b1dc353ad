#pragma once

#include "boardfiles/Board.h"
#include "host/State.h"
#include "host/plugin/Action.h"

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Host {

// What was last set on the fans and LEDs that the board's safe state changes, in a file that
// outlives the process: who comes back after the safe state was set sets it again.
class LastSettings {
 public:
   // Reads the file, where there is one. `board` must outlive this object.
   LastSettings( const BoardFiles::Board &board, std::filesystem::path file );

   // Takes what is new out of a report.
   void look( const BoardReport &report );
   // By the object's number, what to do so that it is as it was.
   std::vector<std::pair<size_t, Action>> actions() const;
   // "fan1 12000, fan1-led good"; "nothing".
   std::string words() const;

 private:
   void read();
   void write();

   const BoardFiles::Board &board_;
   const std::filesystem::path file_;
   std::vector<size_t> objects_{};                 // that the safe state changes
   std::map<std::string, std::string> settings_{}; // by the object's name, as a user words it
   std::string error_{};                           // why the file can't be used
};

} // namespace Host
