#pragma once

#include "host/terminal/Snapshot.h"
#include "screen/Sections.h"

#include <string>
#include <vector>

namespace Host {

// The id of an object, a bus and a cause among what can be selected.
std::string objectId( const std::string &name );
// Nothing where it is none.
std::optional<std::string> objectIn( const std::string &id );

// Of these objects: how each stands, its values, and below them what is wrong with it.
void addObjects( Screen::Section &section, const std::vector<const ObjectReport *> &objects,
                 double older, size_t columns );

} // namespace Host
