#pragma once

#include "host/HealthReport.h"
#include "host/State.h"

#include <string>
#include <vector>

namespace Host {

// One line by the convention of monitoring plugins: "CRITICAL: 2 causes: psu1 input lost, ...".
std::string summaryOf( const HealthReport &health );

// "165 of 174 objects are good; 56 more are of modules that are not there".
std::string fineOf( const HealthReport &health );

// A few lines for each cause, the worst first, and one that says what is fine. With columns, longer
// lines are wrapped.
std::vector<std::string> linesOf( const HealthReport &health, size_t columns );

// Each number with its unit and limits: 'temp-front_temperature'=24.5;60;70.
std::string performanceDataOf( const BoardReport &report );

} // namespace Host
