#include "board/SimulatedBoard.h"

#include "board/ChipKinds.h"
#include "busses/SimulatedBus.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>

namespace Smbusd {

SimulatedBoard::SimulatedBoard( const std::string &topologyPath, const std::string &simulationPath,
                                const Clock &clock )
   : topology_( loadTopology( topologyPath ) ), simulation_( loadSimulation( simulationPath ) ) {
   for ( const TopologyRoot &root : topology_.roots ) {
      Wire *&wire = roots_[root.id];
      if ( !wire ) // described in pieces otherwise
         wire = &newWire();
      layBus( root.bus, *wire );
   }
   seatChips( clock );
   joinChannels();
}

Busses SimulatedBoard::busses() const {
   Busses busses;
   for ( const auto &[id, wire] : roots_ )
      busses.emplace( id, std::make_unique<SimulatedBus>( *wire ) );
   return busses;
}

Wire &SimulatedBoard::newWire() { return *wires_.emplace_back( std::make_unique<Wire>() ); }

void SimulatedBoard::layBus( const TopologyBus &bus, Wire &wire ) {
   for ( const TopologyDevice &device : bus.devices )
      layDevice( device, wire );
   for ( const TopologyMux &mux : bus.muxes )
      layMux( mux, bus, wire );
}

void SimulatedBoard::layDevice( const TopologyDevice &device, Wire &wire ) {
   if ( !device.address )
      return;
   const Place place{ &wire, *device.address };
   const auto [first, isNew] = seats_.try_emplace( device.did, Seat{ place, device.place } );
   if ( !isNew && first->second.place != place )
      throw BoardError::at(
         topology_.path, device.place,
         fmt::format( "did {} is elsewhere already, at {}", device.did, first->second.pointer ) );
}

void SimulatedBoard::layMux( const TopologyMux &mux, const TopologyBus &on, Wire &wire ) {
   const auto device = std::find_if( on.devices.begin(), on.devices.end(), [&]( const auto &each ) {
      return each.did == mux.did && each.address;
   } );
   if ( device == on.devices.end() )
      throw BoardError::at(
         topology_.path, mux.place + "/did",
         fmt::format( "no device of this bus has did {} and an address", mux.did ) );
   for ( const TopologyBus &bus : mux.busses ) {
      const auto control = static_cast<uint8_t>( bus.id ); // the byte that selects the channel
      if ( !std::has_single_bit( control ) )
         throw BoardError::at( topology_.path, bus.place + "/id",
                               fmt::format( "{} selects no single channel: its low byte must have "
                                            "one bit (1, 2, 4, ... 128)",
                                            bus.id ) );
      Wire &behind = newWire();
      const auto number = static_cast<unsigned>( std::countr_zero( control ) );
      channels_.push_back( { mux.did, { &wire, *device->address }, number, &behind, mux.place } );
      layBus( bus, behind );
   }
}

void SimulatedBoard::seatChips( const Clock &clock ) {
   for ( const SimulatedChipEntry &entry : simulation_->chips ) {
      const auto seat = seats_.find( entry.did );
      if ( seat == seats_.end() )
         entry.place.member( "did" ).fail(
            fmt::format( "no device of {} has did {} and an address", topology_.path, entry.did ) );
      const Place &place = seat->second.place;
      auto chip = makeChip( entry, simulation_->seed, clock );
      const auto [seated, isFree] = chips_.try_emplace( place, std::move( chip ) );
      if ( !isFree )
         entry.place.fail( fmt::format( "{} sits at this place already ({} in {})",
                                        seated->second->name(), seat->second.pointer,
                                        topology_.path ) );
      place.wire->attach( place.address, *seated->second );
   }
}

void SimulatedBoard::joinChannels() {
   for ( const Channel &channel : channels_ ) {
      const auto found = chips_.find( channel.mux );
      const auto *mux =
         found == chips_.end() ? nullptr : dynamic_cast<const PCA9548 *>( found->second.get() );
      if ( !mux )
         throw BoardError::at( simulation_->file.path, "/chips",
                               fmt::format( "no PCA9548 for did {}, the multiplexer at {} in {}",
                                            channel.muxDid, channel.pointer, topology_.path ) );
      channel.mux.wire->join( *mux, channel.number, *channel.behind );
   }
}

} // namespace Smbusd
