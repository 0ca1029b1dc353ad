#pragma once

#include "boardfiles/Json.h"
#include "smbus/RootBusId.h"

#include <optional>

namespace BoardFiles {

// The root bus that a text of a board's file names. Reports a text that names none.
std::optional<Bus::RootBusId> rootBusIn( const Json &json, Findings &findings );

} // namespace BoardFiles
