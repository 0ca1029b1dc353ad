#pragma once

#include <string>
#include <vector>

namespace Host {

using Rows = std::vector<std::vector<std::string>>;

// A cell that has nothing to show has a dash.
std::string orDash( std::string text );

// Lines with the cells of each column below each other. All rows have as many cells.
std::vector<std::string> inColumns( const Rows &rows );

} // namespace Host
