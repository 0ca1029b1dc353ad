// A page of sections that fold, with what a filter leaves of them.
#pragma once

#include "screen/Page.h"

#include <set>
#include <string>
#include <vector>

namespace Screen {

// Something with lines of its own.
struct Item {
   std::string id{};
   std::vector<Line> lines{};
};

struct Section {
   std::string title{};
   Line summary{};             // beside the title
   std::vector<Line> legend{}; // below it
   std::vector<Item> items{};
   std::vector<Item> cells{}; // have one line each; several stand beside each other
   std::vector<Item> notes{}; // below them
};

// The id of a section's title among the targets.
std::string titleId( const std::string &title );

// Folded sections show their title alone. With a filter there is only what has this text, in small
// or large letters, and nothing is folded.
Page pageOf( const std::vector<Section> &sections, const std::set<std::string> &folded,
             const std::string &filter, size_t columns );

} // namespace Screen
