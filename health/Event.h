#pragma once

#include "health/Level.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Health {

using WallTime = std::chrono::sys_time<std::chrono::milliseconds>;

// One entry of a board's journal: something has become wrong, or is good again.
struct Event {
   enum class What {
      Set,          // a cause was found, or has become worse or better without being good
      Clear,        // it is gone
      Acknowledged, // a person has seen it
      Note,         // nothing is wrong: a module was taken out or plugged
   };

   uint64_t id = 0; // in the journal, which counts up; 0: not in it
   WallTime time{};
   What what = What::Set;
   std::string cause{};  // what it is about, the same in set and clear: "psu2-slot absent"
   std::string object{}; // of the board; empty for a chip without one, a bus, the server
   std::string value{};  // "temperature"; empty: the whole object
   Level level = Level::Warning;
   std::string words{};                 // "120 °C is above the critical limit of 100 °C"
   std::optional<double> number{};      // the value, where a limit was crossed
   std::optional<double> limit{};       // that limit
   std::string unit{};                  // of both
   std::vector<std::string> explains{}; // the objects that it took with it

   bool operator==( const Event & ) const = default;
};

// "set", "clear", "acknowledged", "note".
std::string_view nameOf( Event::What what );

} // namespace Health
