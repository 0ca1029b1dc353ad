#pragma once

#include "boardfiles/Board.h"

#include <string>
#include <string_view>
#include <vector>

namespace Host {

// The objects that an object is on, up to the slot.
std::vector<size_t> onOf( const BoardFiles::Board &board, size_t object );

// What each object is and where, and what can be done with one of its type, by
// boards/wiring.schema.json: what stays as it is while serve runs.
std::string wiringJson( std::string_view name, const BoardFiles::Board &board );

} // namespace Host
