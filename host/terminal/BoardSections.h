#pragma once

#include "host/terminal/Snapshot.h"
#include "screen/Sections.h"

#include <vector>

namespace Host {

// A board as sections that fold: the causes of what is wrong, then all of its objects and busses.
std::vector<Screen::Section> sectionsOf( const Snapshot &snapshot, size_t columns );

// All that is known of one of them, by its id. Empty: there is nothing more to tell.
std::vector<std::string> detailOf( const Snapshot &snapshot, const std::string &id,
                                   size_t columns );

} // namespace Host
