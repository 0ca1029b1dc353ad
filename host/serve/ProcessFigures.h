#pragma once

#include <cstdint>

namespace Host {

// What this process has used, as the system counts it.
struct ProcessFigures {
   double cpuSeconds = 0; // of the processors
   uint64_t residentBytes = 0;
   double startTime = 0; // Unix time
   uint64_t descriptors = 0;
   uint64_t descriptorLimit = 0;
};

ProcessFigures processFigures();

} // namespace Host
