#pragma once

#include "health/Event.h"

#include <optional>
#include <string>
#include <string_view>

namespace Health {

// "2026-11-22T13:00:05.250Z", and back.
std::string timeText( WallTime time );
std::optional<WallTime> timeIn( std::string_view text );

// "2026-11-22 13:00:05", as the clock on the wall shows it here.
std::string localTimeText( WallTime time );

// From when on, or behind which event.
struct Since {
   std::optional<WallTime> time{};
   uint64_t id = 0;

   bool operator==( const Since & ) const = default;
};
// What a person or a program writes for it: "2026-11-22 13:00" and "13:00" here, the latter today
// or yesterday; "90s", "10m", "2h", "3d" ago; a time of timeText(); or the number of an event.
// Nothing when it is none of these.
std::optional<Since> sinceOf( std::string_view text, WallTime now );
// These forms, for a message; and those without the number.
inline constexpr auto sinceForms =
   R"("2026-11-22 13:00", "13:00", "90s", "10m", "2h", "3d" or the number of an event)";
inline constexpr auto sinceTimeForms = R"("2026-11-22 13:00", "13:00", "90s", "10m", "2h" or "3d")";

} // namespace Health
