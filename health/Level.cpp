#include "health/Level.h"

#include <algorithm>
#include <array>

namespace Health {

namespace {

constexpr std::array<std::string_view, 4> names{ "ok", "warning", "critical", "indeterminate" };

} // namespace

std::string_view nameOf( Level level ) { return names.at( static_cast<size_t>( level ) ); }

std::optional<Level> levelOf( std::string_view name ) {
   const auto known = std::find( names.begin(), names.end(), name );
   if ( known == names.end() )
      return {};
   return static_cast<Level>( known - names.begin() );
}

} // namespace Health
