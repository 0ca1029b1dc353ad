// Where a board's objects are on its box: panel.json.
#pragma once

#include "boardfiles/Finding.h"

#include <filesystem>
#include <string>
#include <vector>

namespace BoardFiles {

// Millimetres from the upper left corner of its side.
struct PanelPlace {
   std::string object{};
   double x = 0, y = 0, width = 0, height = 0;
   bool operator==( const PanelPlace & ) const = default;
};

struct PanelSide {
   std::string name{};
   double width = 0, height = 0; // millimetres
   std::vector<PanelPlace> places{};
};

using Panel = std::vector<PanelSide>;

// Reads the file and reports what its schema refuses, objects that the board doesn't have, or that
// are there twice, and places that are not on their side or half upon another.
Panel readPanel( const std::filesystem::path &path, const std::vector<std::string> &objects,
                 Findings &findings );

} // namespace BoardFiles
