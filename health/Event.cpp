#include "health/Event.h"

#include "boardfiles/EnumNames.h"

namespace Health {

namespace {

constexpr BoardFiles::EnumNames<Event::What, 3> whatNames{ { "set", "clear", "acknowledged" } };

} // namespace

std::string_view nameOf( Event::What what ) { return whatNames[what]; }

} // namespace Health
