#pragma once

#include "host/plugin/Action.h"
#include "host/plugin/Plugin.h"
#include "host/plugin/Readings.h"

namespace Host {

// Has an object carry an action out, and tells how that ended as a reading with the operation's
// name: its value is what the operation gave, where it gives anything.
void act( const Record &record, const Action &action, const ReadingSink &sink );

} // namespace Host
