#include "health/Event.h"

#include "boardfiles/EnumNames.h"

namespace Health {

namespace {

constexpr BoardFiles::EnumNames<Event::What, 4> whatNames{ { "set", "clear", "acknowledged",
                                                             "note" } };

} // namespace

std::string_view nameOf( Event::What what ) { return whatNames[what]; }

} // namespace Health
