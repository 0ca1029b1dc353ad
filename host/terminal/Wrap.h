#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Host {

// Adds a line, wrapped at blanks where it has more than `columns`; 0: never. Lines but the first
// begin with `indent` blanks.
void wrap( std::vector<std::string> &lines, std::string text, size_t indent, size_t columns );

} // namespace Host
