#pragma once

#include "boardfiles/Json.h"
#include "health/Event.h"

#include <optional>
#include <string>

namespace Host {

// An event as one JSON object on one line, by "Event" of docs/openapi.json. What is empty is left
// out.
std::string toJson( const Health::Event &event );

// Nothing when the text is not such an object.
std::optional<Health::Event> readEvent( const std::string &text );
std::optional<Health::Event> toEvent( const BoardFiles::Json &json );

} // namespace Host
