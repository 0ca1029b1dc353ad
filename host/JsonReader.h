#pragma once

#include "host/State.h"

#include <optional>
#include <rapidjson/document.h>
#include <string>

namespace Host {

// A reading from its members; unreadable where its state is missing or unknown.
Reading toReading( const rapidjson::Value &json );

// What toJson() wrote: the board's folder and its objects.
struct BoardText {
   std::string board{};
   BoardReport objects{};
};
// Nothing when the text is no such thing.
std::optional<BoardText> readBoard( const std::string &json );

} // namespace Host
