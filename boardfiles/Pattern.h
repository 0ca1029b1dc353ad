#pragma once

#include <string>
#include <string_view>

namespace BoardFiles {

// Whether a POSIX extended regular expression matches a part of the text; all of it where the
// expression starts with ^ and ends with $. Throws std::logic_error for an expression that isn't
// one.
bool matches( std::string_view text, const std::string &pattern );

// Whether it matches the whole text.
bool matchesWhole( std::string_view text, const std::string &pattern );

} // namespace BoardFiles
