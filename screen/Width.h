#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Screen {

// A character of a UTF-8 text: its bytes, and how many columns of a terminal it takes.
struct Character {
   size_t bytes = 1;
   size_t columns = 1;
   char32_t code = 0; // a byte that is no UTF-8 stands for itself
};
Character firstOf( std::string_view text );

// The columns that a text takes.
size_t widthOf( std::string_view text );

// The bytes of the first `columns` columns of a text; all when it has fewer.
size_t bytesWithin( std::string_view text, size_t columns );

// The first `columns` columns of a text.
std::string clip( const std::string &text, size_t columns );

// The same, with the mark "…" where something is missing.
std::string shorten( const std::string &text, size_t columns );

// Filled with blanks, or shortened, to exactly `columns`.
std::string fill( const std::string &text, size_t columns );

} // namespace Screen
