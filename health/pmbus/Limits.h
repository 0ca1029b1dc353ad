#pragma once

#include "health/Level.h"
#include "health/pmbus/Registers.h"

#include <string>
#include <vector>

namespace Health::Pmbus {

// A limit that a supply has for one of its quantities.
struct Limit {
   std::string quantity{}; // "input_voltage", "temperature"
   bool isHigh = false;    // wrong above it; else wrong below it
   Level level = Level::Warning;
   double number = 0;
   std::string unit{}; // V, A, W, °C
   bool operator==( const Limit & ) const = default;
};

// The commands that read limits. All are words, and VOUT_MODE, a byte, is needed to read those of
// the output voltage.
const std::vector<uint8_t> &limitCommands();

// The limits in these registers, in the order of their commands. Those of the output voltage are
// left out where VOUT_MODE is missing or is not linear.
std::vector<Limit> limitsIn( const Registers &registers );

} // namespace Health::Pmbus
