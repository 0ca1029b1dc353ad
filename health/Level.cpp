#include "health/Level.h"

#include "boardfiles/EnumNames.h"

namespace Health {

namespace {

constexpr BoardFiles::EnumNames<Level, 4> levelNames{ { "ok", "warning", "critical",
                                                        "indeterminate" } };

} // namespace

std::string_view nameOf( Level level ) { return levelNames[level]; }

std::optional<Level> levelOf( std::string_view name ) { return levelNames.find( name ); }

} // namespace Health
