#pragma once

#include <optional>
#include <string_view>

namespace Health {

// How bad the state of a value, an object or a board is.
enum class Level {
   Ok,
   Warning,
   Critical,
   Indeterminate, // nobody knows: stale, unreadable, absent
};

// A limit was crossed.
inline bool isBeyond( Level level ) { return level == Level::Warning || level == Level::Critical; }

// "ok", "warning", "critical", "indeterminate".
std::string_view nameOf( Level level );
std::optional<Level> levelOf( std::string_view name );

} // namespace Health
