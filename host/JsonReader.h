#pragma once

#include "boardfiles/Json.h"
#include "host/State.h"

#include <optional>
#include <string>

namespace Host {

// A reading from its members; unreadable where its state is missing or unknown.
Reading toReading( const BoardFiles::Json &json );

// What toJson() wrote: the board's folder and its objects.
struct BoardText {
   std::string board{};
   BoardReport objects{};
};
// Nothing when the text is no such thing.
std::optional<BoardText> readBoard( const std::string &text );

} // namespace Host
