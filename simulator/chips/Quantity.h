#pragma once

#include <functional>
#include <string>

namespace Simulator {

// One thing about a chip or what it is wired to that the bench can read, and perhaps set: degrees,
// volts, the level of a pin. Of a chip with several alike the name begins with whose it is:
// "fan3.inlet rpm".
struct Quantity {
   std::string name;
   std::string unit; // empty for levels and switches, which are 0 or 1
   std::function<double()> get;
   std::function<void( double )> set = {}; // none: it follows from others
   double least = 0;                       // that may be set
   double most = 1;
};

} // namespace Simulator
