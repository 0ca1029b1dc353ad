#include "simulator/board/SimulatedBoard.h"

#include "simulator/board/ChipKinds.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>

namespace Simulator {

SimulatedBoard::SimulatedBoard( const std::string &topologyPath, const std::string &simulationPath,
                                const Bus::Clock &clock )
   : topology_( BoardFiles::loadTopology( topologyPath ) ),
     simulation_( BoardFiles::loadSimulation( simulationPath ) ), clock_( clock ) {
   for ( const BoardFiles::TopologyRoot &root : topology_.roots ) {
      BusSegment *&wire = roots_[root.id];
      if ( !wire ) // described in pieces otherwise
         wire = &newWire();
      layBus( root.bus, *wire );
   }
   seatChips( clock );
   joinChannels();
   addModules();
}

Bus::Busses SimulatedBoard::busses() {
   Bus::Busses busses;
   for ( const auto &[id, wire] : roots_ )
      busses.emplace( id, bus( id ) );
   return busses;
}

std::unique_ptr<SimulatedBus> SimulatedBoard::bus( const Bus::RootBusId &id ) {
   return std::make_unique<SimulatedBus>( *roots_.at( id ), bench_.mutex(),
                                          std::bind_front( &SimulatedBoard::report, this, id ) );
}

void SimulatedBoard::report( const Bus::RootBusId &bus, const Bus::Transfer &transfer,
                             const SimulatedBus::Result &carried ) {
   bench_.count( carried.bytes );
   if ( !tracer_ || !tracer_->hasListeners() )
      return;
   SmbusControl::Transfer told;
   told.set_seconds( std::chrono::duration<double>( clock_.now() ).count() );
   told.set_bus( toString( bus ) );
   told.set_chip( carried.answering ? carried.answering->name() : "" );
   told.set_address( transfer.address );
   told.set_operation( describe( transfer ) );
   told.set_written( transfer.data );
   told.set_read( carried.outcome.data );
   told.set_error( carried.outcome.error );
   tracer_->report( told );
}

BusSegment &SimulatedBoard::newWire() {
   return *wires_.emplace_back( std::make_unique<BusSegment>() );
}

void SimulatedBoard::layBus( const BoardFiles::TopologyBus &bus, BusSegment &wire ) {
   for ( const BoardFiles::TopologyDevice &device : bus.devices )
      layDevice( device, wire );
   for ( const BoardFiles::TopologyMux &mux : bus.muxes )
      layMux( mux, bus, wire );
}

void SimulatedBoard::layDevice( const BoardFiles::TopologyDevice &device, BusSegment &wire ) {
   if ( !device.address )
      return;
   const Place place{ &wire, *device.address };
   const auto [first, isNew] = seats_.try_emplace( device.did, Seat{ place, device.place } );
   if ( !isNew && first->second.place != place )
      throw BoardFiles::BoardError::at(
         topology_.path, device.place,
         fmt::format( "did {} is elsewhere already, at {}", device.did, first->second.pointer ) );
}

void SimulatedBoard::layMux( const BoardFiles::TopologyMux &mux, const BoardFiles::TopologyBus &on,
                             BusSegment &wire ) {
   const auto device = std::find_if( on.devices.begin(), on.devices.end(), [&]( const auto &each ) {
      return each.did == mux.did && each.address;
   } );
   if ( device == on.devices.end() )
      throw BoardFiles::BoardError::at(
         topology_.path, mux.place + "/did",
         fmt::format( "no device of this bus has did {} and an address", mux.did ) );
   for ( const BoardFiles::TopologyBus &bus : mux.busses ) {
      const auto control = static_cast<uint8_t>( bus.id ); // the byte that selects the channel
      if ( !std::has_single_bit( control ) )
         throw BoardFiles::BoardError::at(
            topology_.path, bus.place + "/id",
            fmt::format( "{} selects no single channel: its low byte must have "
                         "one bit (1, 2, 4, ... 128)",
                         bus.id ) );
      BusSegment &behind = newWire();
      const auto number = static_cast<unsigned>( std::countr_zero( control ) );
      channels_.push_back( { mux.did, { &wire, *device->address }, number, &behind, mux.place } );
      layBus( bus, behind );
   }
}

void SimulatedBoard::seatChips( const Bus::Clock &clock ) {
   for ( const BoardFiles::SimulatedChipEntry &entry : simulation_->chips ) {
      const auto seat = seats_.find( entry.did );
      if ( seat == seats_.end() )
         entry.place.member( "did" ).fail(
            fmt::format( "no device of {} has did {} and an address", topology_.path, entry.did ) );
      const Place &place = seat->second.place;
      const Surroundings around{ clock, simulation_->seed, place.address,
                                 [this] { bench_.powerCycle(); },
                                 [this] { bench_.powerIs( false ); } };
      try {
         Chip &chip =
            bench_.seat( { makeChip( entry, around ), entry.kind, place.wire, place.address } );
         place.wire->attach( place.address, chip );
         if ( const auto *mux = dynamic_cast<const PCA9548 *>( &chip ) )
            muxes_.emplace( place, mux );
      } catch ( const BenchError &error ) {
         entry.place.fail(
            fmt::format( "{} ({} in {})", error.what(), seat->second.pointer, topology_.path ) );
      }
   }
}

void SimulatedBoard::joinChannels() {
   for ( const Channel &channel : channels_ ) {
      const auto mux = muxes_.find( channel.mux );
      if ( mux == muxes_.end() )
         throw BoardFiles::BoardError::at(
            simulation_->file.path, "/chips",
            fmt::format( "no PCA9548 for did {}, the multiplexer at {} in {}", channel.muxDid,
                         channel.pointer, topology_.path ) );
      channel.mux.wire->join( *mux->second, channel.number, *channel.behind );
   }
}

void SimulatedBoard::addModules() {
   for ( const BoardFiles::ModuleEntry &entry : simulation_->modules ) {
      Bench::Module module{ entry.name, {}, {}, entry.present };
      try {
         for ( const std::string &chip : entry.chips )
            module.chips.push_back( &bench_.chip( chip ) );
         for ( const BoardFiles::ModuleEntry::Set &set : entry.sets ) {
            Quantity quantity = bench_.quantity( set.chip, set.quantity );
            if ( !quantity.set )
               set.place.fail( fmt::format( "{} can't be set", set.quantity ) );
            module.sets.push_back( { std::move( quantity ), set.in, set.out } );
         }
      } catch ( const BenchError &error ) {
         entry.place.fail( error.what() );
      }
      for ( const Chip *chip : module.chips ) {
         if ( chip->present() != module.present )
            entry.place.fail( fmt::format( "{} is {}, which the module is not", chip->name(),
                                           chip->present() ? "present" : "absent" ) );
      }
      bench_.add( std::move( module ) );
   }
}

} // namespace Simulator
