#pragma once

#include <string>
#include <vector>

namespace Screen {

// A block for each number, the higher the larger: "▁▄█". Numbers that are all equal are in the
// middle.
std::string sparkline( const std::vector<double> &numbers );

} // namespace Screen
