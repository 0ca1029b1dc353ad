#pragma once

#include "boardfiles/SimulationFile.h"
#include "boardfiles/TopologyFile.h"
#include "simulator/board/Bench.h"
#include "simulator/bus/BusSegment.h"
#include "simulator/bus/SimulatedBus.h"
#include "smbus/Clock.h"
#include "smbus/RootBus.h"
#include "smbus/Tracer.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Simulator {

// Wires and chips of a whole board. Several topology devices on one segment with one address are
// views of one chip. Names serve messages and the bench; transfers go by segments and addresses
// alone.
class SimulatedBoard {
 public:
   // The clock outlives the board. Throws BoardError for files with errors.
   SimulatedBoard( const std::string &topologyPath, const std::string &simulationPath,
                   const Bus::Clock & );

   // One for each root bus of the topology. The board outlives them.
   Bus::Busses busses();
   // Of the wires, in Hz, of all busses that have not the usual one.
   const std::map<Bus::RootBusId, uint32_t> &wireClocks() const { return wireClocks_; }
   // Another one on the same segments. Throws std::out_of_range when the topology has none such.
   std::unique_ptr<SimulatedBus> bus( const Bus::RootBusId & );

   // Tells the tracer, which outlives the board's busses, of every transfer.
   void traceTo( Bus::Tracer &tracer ) { tracer_ = &tracer; }

   Bench &bench() { return bench_; }

 private:
   // Where a chip can sit.
   struct Place {
      BusSegment *segment;
      uint8_t address;
      friend auto operator<=>( const Place &, const Place & ) = default;
   };
   struct Seat {
      Place place;
      BoardFiles::Place where; // in the topology
   };
   struct Channel {
      Place mux;
      unsigned number;
      BusSegment *behind;
   };

   BusSegment &newSegment();
   void layBus( const BoardFiles::TopologyBus &, BusSegment & );
   void layDevice( const BoardFiles::TopologyDevice &, BusSegment & );
   void layMux( const BoardFiles::TopologyMux &, const BoardFiles::TopologyBus &on, BusSegment & );
   void seatChips( const BoardFiles::SimulationFile & );
   void joinChannels();
   void addModules( const BoardFiles::SimulationFile & );
   void plugIn( Bench::Module &, const BoardFiles::SimulatedModule::Cage & );
   void layFibres( const BoardFiles::SimulationFile & );
   void report( const Bus::RootBusId &, const Bus::Transfer &, const SimulatedBus::Result & );

   std::vector<std::unique_ptr<BusSegment>> segments_;
   std::map<Bus::RootBusId, BusSegment *> roots_;
   std::map<Bus::RootBusId, uint32_t> wireClocks_;
   std::map<uint32_t, Seat> seats_; // by did
   std::vector<Channel> channels_;
   std::map<Place, PCA9548 *> muxes_;
   Bench bench_;
   const Bus::Clock &clock_;
   Bus::Tracer *tracer_ = nullptr;
};

} // namespace Simulator
