#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Screen {

// Adds a line, wrapped at blanks where it is wider than `columns`, and within a word that is wider
// than a line; 0: never. Lines but the first begin with `indent` blanks.
void wrap( std::vector<std::string> &lines, std::string text, size_t indent, size_t columns );

} // namespace Screen
