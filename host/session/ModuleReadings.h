#pragma once

#include "boardfiles/HealthKeys.h"
#include "host/State.h"
#include "optics/Module.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace Host {

// "rx_power_2": what a monitor is called among an object's values. A module with one lane has
// "rx_power".
std::string valueNameOf( const Optics::Monitor &monitor, const Optics::Module &module );

// A module's values: its identity, its monitors, and in "flags" what it warns of: "ok", or a list:
// "rx_power_2 low alarm, rx_los 2".
// With flags that were read before, too.
std::vector<Reading> readingsOf( const Optics::Module &module,
                                 const std::set<std::string> &flags = {} );

// The value "flags" alone.
Reading flagsReadingOf( const Optics::Module &module, const std::set<std::string> &flags = {} );

// All flags that are set, as in the value "flags".
std::vector<std::string> flagsOf( const Optics::Module &module );

// The module's own thresholds by value: alarms are critical. Of thresholds that contradict each
// other, and of a transmitter that is off, there are none. A value has to come back by a fiftieth
// of the nearest threshold to zero before it is good again.
std::map<std::string, BoardFiles::ValueLimits> limitsOf( const Optics::Module &module );
// Of one monitor; without any where there are none.
BoardFiles::ValueLimits limitsOf( const Optics::Monitor &monitor );

} // namespace Host
