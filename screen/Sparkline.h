#pragma once

#include <string>
#include <vector>

namespace Screen {

// A block for each number, the higher the larger: "▁▄█". Numbers that are all equal are in the
// middle. Of more numbers than cells, each cell has the mean of its share.
std::string sparkline( const std::vector<double> &numbers, size_t cells = 60 );

} // namespace Screen
