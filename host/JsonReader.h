#pragma once

#include "boardfiles/Json.h"
#include "host/HealthReport.h"
#include "host/State.h"

#include <optional>
#include <string>

namespace Host {

// Reads one reading. Its state is unreadable when it is missing or unknown.
Reading toReading( const BoardFiles::Json &json );
// One object of a board, and one cause.
ObjectReport toObject( const BoardFiles::Json &json );
Health::Cause toCause( const BoardFiles::Json &json );

// The output of toJson(): the board's folder and its objects.
struct BoardText {
   std::string board{};
   BoardReport objects{};
};
// Nothing when the text is not such an output.
std::optional<BoardText> readBoard( const std::string &text );

// The output of toJson() for the health of a board. Nothing when the text is not such an output.
std::optional<HealthReport> readHealth( const std::string &text );

} // namespace Host
