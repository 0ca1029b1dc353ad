#pragma once

#include "host/terminal/Snapshot.h"
#include "screen/Sections.h"

#include <string>
#include <vector>

namespace Host {

// A board as sections that fold: the causes of what is wrong, then all of its objects and busses.
std::vector<Screen::Section> sectionsOf( const Snapshot &snapshot, size_t columns );

// The id of what is shown for this one: for a cause its object, if it has one.
std::string shownFor( const Snapshot &snapshot, const std::string &id );

// All that is known of one of them, by its id. Empty: there is nothing more to tell.
std::vector<std::string> detailOf( const Snapshot &snapshot, const std::string &id,
                                   size_t columns );

} // namespace Host
