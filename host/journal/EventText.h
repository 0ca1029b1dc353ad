#pragma once

#include "health/Event.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace Host {

// The level of a cause that is there; else "clear" or "acknowledged".
std::string_view kindOf( const Health::Event &event );

// "psu2-slot absent: no module; explains psu2, psu2-fan1". With `longest`, in about so many
// characters: then names of the list are left out and counted.
std::string textOf( const Health::Event &event, size_t longest = SIZE_MAX );

} // namespace Host
