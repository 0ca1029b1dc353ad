// All that is known of one object's values, and of causes.
#pragma once

#include "health/Monitor.h"
#include "host/State.h"
#include "host/terminal/TextSections.h"

#include <vector>

namespace Host {

// With what is known of their limits and their past, which may also be drawn as a small line.
void addValues( TextSections &screen, const ObjectReport &object, bool isDrawn = false );

// Each with since when it is there, and what it explains.
void addCauses( TextSections &screen, const std::vector<Health::Cause> &causes );

} // namespace Host
