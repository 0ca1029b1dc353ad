#pragma once

#include "Clock.h"
#include "board/Bench.h"
#include "board/SimulationFile.h"
#include "board/TopologyFile.h"
#include "busses/RootBus.h"
#include "busses/SimulatedBus.h"
#include "busses/Wire.h"
#include "control/Tracer.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Smbusd {

// Wires and chips of a whole board. Several topology devices on one wire with one address are views
// of one chip. Names serve messages and the bench; transfers go by wires and addresses alone.
class SimulatedBoard {
 public:
   // The clock outlives the board. Throws BoardError.
   SimulatedBoard( const std::string &topologyPath, const std::string &simulationPath,
                   const Clock & );

   // One for each root bus of the topology. The board outlives them.
   Busses busses();
   // Another one on the same wires. Throws std::out_of_range when the topology has none such.
   std::unique_ptr<SimulatedBus> bus( const RootBusId & );

   // Tells the tracer, which outlives the board's busses, of every transfer.
   void traceTo( Tracer &tracer ) { tracer_ = &tracer; }

   Bench &bench() { return bench_; }

 private:
   // Where a chip can sit.
   struct Place {
      Wire *wire;
      uint8_t address;
      friend auto operator<=>( const Place &, const Place & ) = default;
   };
   struct Seat {
      Place place;
      std::string pointer; // in the topology
   };
   struct Channel {
      uint32_t muxDid;
      Place mux;
      unsigned number;
      Wire *behind;
      std::string pointer;
   };

   Wire &newWire();
   void layBus( const TopologyBus &, Wire & );
   void layDevice( const TopologyDevice &, Wire & );
   void layMux( const TopologyMux &, const TopologyBus &on, Wire & );
   void seatChips( const Clock & );
   void joinChannels();
   void addModules();
   void report( const RootBusId &, const Transfer &, const SimulatedBus::Carried & );

   const TopologyFile topology_;
   const std::unique_ptr<const SimulationFile> simulation_;
   std::vector<std::unique_ptr<Wire>> wires_;
   std::map<RootBusId, Wire *> roots_;
   std::map<uint32_t, Seat> seats_; // by did
   std::vector<Channel> channels_;
   std::map<Place, const PCA9548 *> muxes_;
   Bench bench_;
   const Clock &clock_;
   Tracer *tracer_ = nullptr;
};

} // namespace Smbusd
