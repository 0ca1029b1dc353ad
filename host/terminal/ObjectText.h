// All that is known of one object's values, and of causes.
#pragma once

#include "health/Monitor.h"
#include "host/State.h"
#include "host/terminal/TextSections.h"

#include <map>
#include <string>
#include <vector>

namespace Host {

using NumbersByValue = std::map<std::string, std::vector<double>>;

// With what is known of their limits and their past. With a history, which may be empty, the past
// is drawn as a small line, too.
void addValues( TextSections &screen, const ObjectReport &object,
                const NumbersByValue *history = nullptr );

// Each with since when it is there, and what it explains.
void addCauses( TextSections &screen, const std::vector<Health::Cause> &causes );

} // namespace Host
