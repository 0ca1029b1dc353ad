// What a terminal shows, without the terminal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Screen {

// What a text means. A colour never says it alone: a word or a sign stands beside it.
enum class Style : uint8_t { Plain, Strong, Bar, Good, Warning, Critical, Unknown, Faint };

struct Span {
   std::string text{};
   Style style = Style::Plain;
   bool isSelected = false;
};

using Line = std::vector<Span>;
using Picture = std::vector<Line>; // from the top

size_t widthOf( const Line &line );
// Its first columns.
Line clip( const Line &line, size_t columns );
// Followed by blanks up to this width, or cut.
Line fill( const Line &line, size_t columns );
// Without styles, and without blanks at the end.
std::string toText( const Line &line );
std::string toText( const Picture &picture );

// Lines of one style.
std::vector<Line> linesOf( const std::vector<std::string> &texts, Style style = Style::Plain );

} // namespace Screen
