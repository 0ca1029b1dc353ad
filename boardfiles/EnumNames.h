#pragma once

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace BoardFiles {

// The names of an enumeration's values, in its order from nought on.
template <class Enum, size_t count>
struct EnumNames {
   std::array<std::string_view, count> names;

   constexpr std::string_view operator[]( Enum value ) const {
      return names[static_cast<size_t>( value )];
   }
   constexpr std::optional<Enum> find( std::string_view name ) const {
      const auto found = std::find( names.begin(), names.end(), name );
      if ( found == names.end() )
         return {};
      return static_cast<Enum>( found - names.begin() );
   }
};

} // namespace BoardFiles
