#pragma once

#include "host/State.h"

#include <optional>
#include <rapidjson/document.h>
#include <string>

namespace Host {

// The value that a JSON value stands for; nothing for null, lists and objects.
Scalar toScalar( const rapidjson::Value *json );

// The members "status" and "fault" of an object.
Fault toFault( const rapidjson::Value &json );

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
