// How long the wires of a board's busses are busy with its objects.
#pragma once

#include "boardfiles/DriverTable.h"
#include "boardfiles/ObjectsFile.h"
#include "boardfiles/SimulationFile.h"
#include "boardfiles/TopologyFile.h"
#include "smbus/WireTime.h"

#include <vector>

namespace BoardFiles {

// Transfers, and the periods of the bus's clock that they take. A poll may be a part of a refresh,
// so these are not always whole.
struct WireCost {
   double transfers = 0;
   double bits = 0;
};

// Seconds from one reading of a module in a cage to the next, where nobody says otherwise.
inline constexpr double periodOfModules = 10;

// What the objects put on one root bus: with every module there, nothing failing, and no value that
// a driver still has from before. The selections of muxes and their ends are part of it.
struct BusLoad {
   Bus::RootBusId bus{};
   Place place{};                    // in the topology
   bool hasWires = true;             // I/O ports have none
   uint32_t clock = Bus::usualClock; // Hz
   WireCost reads{};                 // of all objects, once
   WireCost polls{};                 // of drivers' timers, in a second
   WireCost modules{};               // of the modules in all cages, once

   // With a refresh in every period, in seconds: what is on the bus in one of them.
   WireCost refresh( double period ) const;
   double seconds( double period ) const { return refresh( period ).bits / clock; }
   double share( double period ) const { return seconds( period ) / period; }
};

// Of each root bus of a topology, in its order; none where the table doesn't tell what any driver
// puts on a bus. The objects are known to be good. Wires: of the busses that have not the usual
// clock.
std::vector<BusLoad> busLoads( const TopologyFile &topology,
                               const std::vector<BoardObject> &objects, const DriverTable &table,
                               const std::map<Bus::RootBusId, SimulatedWires> &wires );

// Warns of busses that are busy for more than 80 % of the time.
void warnOfLoads( const std::vector<BusLoad> &loads, double period, Findings &findings );

} // namespace BoardFiles
