#pragma once

#include "health/Level.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Health {

inline constexpr size_t noObject = static_cast<size_t>( -1 );

// One thing that is wrong with a board now.
struct Finding {
   // In the order in which one explains another.
   enum class Kind {
      PlugIn,
      Server,
      Bus,
      Multiplexer,
      Chip,
      Absent,
      Supply,
      Unreadable,
      Follows,
      Limit,
      Rule
   };

   Kind kind = Kind::Unreadable;
   std::string key{};        // the same as long as it is the same fault: "psu2-slot absent"
   size_t object = noObject; // that it is about
   std::string value{};
   Level level = Level::Warning; // indeterminate: it isn't known whether it is still so
   std::string words{};
   std::optional<double> number{};
   std::optional<double> limit{};
   std::string unit{};
   bool needsTime = false; // it is told only once it has lasted: the next reading may say more
   std::vector<size_t> explainedBy{}; // other findings; none: it is a cause
};

using Findings = std::vector<Finding>;

} // namespace Health
