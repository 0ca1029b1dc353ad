#pragma once

#include <functional>
#include <string>

namespace Simulator {

// A physical quantity of a chip or of its surroundings, which can be read and perhaps set: degrees,
// volts, the level of a pin. If a chip has several parts, the name starts with the part:
// "fan3.inlet rpm".
struct Quantity {
   std::string name;
   std::string unit; // empty for levels and switches, which are 0 or 1
   std::function<double()> get;
   std::function<void( double )> set = {}; // empty: it can't be set
   double least = 0;                       // limits for set
   double most = 1;
};

} // namespace Simulator
