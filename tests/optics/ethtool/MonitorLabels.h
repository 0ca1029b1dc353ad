// What a label of ethtool's is about.
#pragma once

#include "optics/Module.h"

namespace OpticsTest {

struct MonitorLabel {
   Optics::Quantity quantity{};
   unsigned lane = 0;
   bool isFlag = false, isThreshold = false;
   std::string which{};             // "high alarm"
   std::optional<bool> isAverage{}; // of the rx power
};

// Nothing if it is no label of a monitor, a threshold or a flag.
const std::optional<MonitorLabel> &monitorLabelOf( const std::string &text );

} // namespace OpticsTest
