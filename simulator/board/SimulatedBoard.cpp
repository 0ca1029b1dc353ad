#include "simulator/board/SimulatedBoard.h"

#include "simulator/board/ChipKinds.h"
#include "simulator/chips/XcvrCpld.h"
#include "simulator/chips/modules/ModuleChip.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>

namespace Simulator {

namespace {

// Both files, held against each other, or all that is wrong with them.
std::pair<std::unique_ptr<const BoardFiles::TopologyFile>,
          std::unique_ptr<const BoardFiles::SimulationFile>>
load( const std::string &topologyPath, const std::string &simulationPath ) {
   BoardFiles::Findings findings;
   auto topology = BoardFiles::readTopology( topologyPath, findings );
   auto simulation = BoardFiles::readSimulation( simulationPath, findings );
   if ( topology && simulation )
      BoardFiles::checkSimulation( *simulation, *topology, findings );
   BoardFiles::throwErrors( findings );
   return { std::move( topology ), std::move( simulation ) };
}

} // namespace

SimulatedBoard::SimulatedBoard( const std::string &topologyPath, const std::string &simulationPath,
                                const Bus::Clock &clock )
   : clock_( clock ) {
   const auto [topology, simulation] = load( topologyPath, simulationPath );
   for ( const BoardFiles::TopologyRoot &root : topology->roots ) {
      BusSegment *&segment = roots_[root.id];
      if ( !segment ) // a file may describe a bus in pieces
         segment = &newSegment();
      layBus( root.bus, *segment );
   }
   for ( const auto &[bus, wires] : simulation->wires )
      wireClocks_[bus] = wires.clock;
   seatChips( *simulation );
   joinChannels();
   addModules( *simulation );
   layFibres( *simulation );
}

Bus::Busses SimulatedBoard::busses() {
   Bus::Busses busses;
   for ( const auto &[id, segment] : roots_ )
      busses.emplace( id, bus( id ) );
   return busses;
}

std::unique_ptr<SimulatedBus> SimulatedBoard::bus( const Bus::RootBusId &id ) {
   return std::make_unique<SimulatedBus>( *roots_.at( id ), bench_.mutex(),
                                          std::bind_front( &SimulatedBoard::report, this, id ) );
}

void SimulatedBoard::report( const Bus::RootBusId &bus, const Bus::Transfer &transfer,
                             const SimulatedBus::Result &result ) {
   bench_.count( *result.outcome.bytes );
   if ( !tracer_ || !tracer_->hasListeners() )
      return;
   SmbusControl::Transfer trace;
   trace.set_seconds( std::chrono::duration<double>( clock_.now() ).count() );
   trace.set_bus( toString( bus ) );
   trace.set_chip( result.answering ? result.answering->name() : "" );
   trace.set_address( transfer.address );
   trace.set_operation( describe( transfer ) );
   trace.set_written( transfer.data );
   trace.set_read( result.outcome.data );
   trace.set_error( result.outcome.error );
   tracer_->report( trace );
}

BusSegment &SimulatedBoard::newSegment() {
   return *segments_.emplace_back( std::make_unique<BusSegment>() );
}

void SimulatedBoard::layBus( const BoardFiles::TopologyBus &bus, BusSegment &segment ) {
   for ( const BoardFiles::TopologyDevice &device : bus.devices )
      layDevice( device, segment );
   for ( const BoardFiles::TopologyMux &mux : bus.muxes )
      layMux( mux, bus, segment );
}

void SimulatedBoard::layDevice( const BoardFiles::TopologyDevice &device, BusSegment &segment ) {
   if ( device.address )
      seats_.try_emplace( device.did, Seat{ { &segment, *device.address }, device.place } );
}

void SimulatedBoard::layMux( const BoardFiles::TopologyMux &mux, const BoardFiles::TopologyBus &on,
                             BusSegment &segment ) {
   const auto device = std::find_if( on.devices.begin(), on.devices.end(), [&]( const auto &each ) {
      return each.did == mux.did && each.address;
   } );
   if ( device == on.devices.end() )
      throw BoardFiles::BoardError(
         mux.didPlace, fmt::format( "the mux's chip, device {}, has no address", mux.did ) );
   for ( const BoardFiles::TopologyBus &bus : mux.busses ) {
      BusSegment &behind = newSegment();
      const auto number =
         static_cast<unsigned>( std::countr_zero( static_cast<uint8_t>( bus.id ) ) );
      channels_.push_back( { { &segment, *device->address }, number, &behind } );
      layBus( bus, behind );
   }
}

void SimulatedBoard::seatChips( const BoardFiles::SimulationFile &simulation ) {
   for ( const BoardFiles::SimulatedChip &entry : simulation.chips ) {
      const Seat &seat = seats_.at( entry.did );
      const Place &place = seat.place;
      const Surroundings around{ clock_, simulation.seed, place.address,
                                 [this] { bench_.powerCycle(); },
                                 [this] { bench_.powerIs( false ); } };
      try {
         Chip &chip =
            bench_.seat( { makeChip( entry, around ), entry.kind, place.segment, place.address } );
         place.segment->attach( place.address, chip );
         if ( entry.secondDid ) {
            const Place &second = seats_.at( *entry.secondDid ).place;
            second.segment->attach( second.address, chip );
         }
         if ( auto *mux = dynamic_cast<PCA9548 *>( &chip ) )
            muxes_.emplace( place, mux );
      } catch ( const BenchError &error ) {
         throw BoardFiles::BoardError(
            entry.place, fmt::format( "{} ({})", error.what(), toText( seat.where ) ) );
      }
   }
}

void SimulatedBoard::joinChannels() {
   for ( const Channel &channel : channels_ )
      channel.mux.segment->join( *muxes_.at( channel.mux ), channel.number, *channel.behind );
}

void SimulatedBoard::addModules( const BoardFiles::SimulationFile &simulation ) {
   for ( const BoardFiles::SimulatedModule &entry : simulation.modules ) {
      Bench::Module module{ entry.name, {}, {}, entry.present };
      try {
         for ( const std::string &chip : entry.chips )
            module.chips.push_back( &bench_.chip( chip ) );
         for ( const BoardFiles::SimulatedModule::Set &set : entry.sets ) {
            Quantity quantity = bench_.quantity( set.chip, set.quantity );
            if ( !quantity.set )
               throw BoardFiles::BoardError( set.place,
                                             fmt::format( "{} can't be set", set.quantity ) );
            module.sets.push_back( { std::move( quantity ), set.in, set.out } );
         }
         if ( entry.cage )
            plugIn( module, *entry.cage );
      } catch ( const BenchError &error ) {
         throw BoardFiles::BoardError( entry.place, error.what() );
      }
      bench_.add( std::move( module ) );
   }
}

void SimulatedBoard::plugIn( Bench::Module &module,
                             const BoardFiles::SimulatedModule::Cage &cage ) {
   module.sets.push_back( { bench_.quantity( cage.chip, cage.name + " presence" ), 1, 0 } );
   auto &cpld = dynamic_cast<XcvrCpld &>( bench_.chip( cage.chip ) );
   for ( Chip *chip : module.chips )
      if ( auto *pluggable = dynamic_cast<Pluggable *>( chip ) )
         cpld.connect( cage.name, *pluggable );
}

void SimulatedBoard::layFibres( const BoardFiles::SimulationFile &simulation ) {
   const auto endIn = [&]( const std::string &name, const BoardFiles::Place &place ) -> auto & {
      for ( const Bench::Module &module : bench_.modules() )
         for ( Chip *chip : module.chips )
            if ( auto *end = dynamic_cast<ModuleChip *>( chip ); end && module.name == name )
               return *end;
      throw BoardFiles::BoardError(
         place, fmt::format( "module {} has no transceiver that a fibre could be put into; name "
                             "another module, or add the chip to its \"chips\"",
                             name ) );
   };
   for ( const BoardFiles::SimulatedFibre &fibre : simulation.fibres ) {
      ModuleChip &one = endIn( fibre.one, fibre.place );
      ModuleChip &other = endIn( fibre.other, fibre.place );
      ModuleChip::join( one, other, fibre.loss );
   }
}

} // namespace Simulator
