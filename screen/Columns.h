// Tables: cells of a column stand below each other.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Screen {

using Rows = std::vector<std::vector<std::string>>;

// A cell that has nothing to show has a dash.
std::string orDash( std::string text );

// How a table that is too wide becomes narrower.
struct Narrowing {
   bool hasNotes = false; // what is in the last column stands in lines of its own below its row
   std::vector<size_t> dispensable{}; // columns that are left out then, in this order
   std::optional<size_t> wrapped{};   // then the cells of this column have several lines
};

// Lines with the cells of each column below each other. All rows have as many cells. No line is
// wider than `columns`; 0: as wide as they are. A last line names the columns that had no room.
std::vector<std::string> inColumns( const Rows &rows, size_t columns = 0,
                                    const Narrowing &narrowing = {} );

} // namespace Screen
