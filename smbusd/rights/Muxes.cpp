#include "smbusd/rights/Muxes.h"

#include "smbus/Decode.h"

#include <fmt/format.h>

#include <algorithm>

namespace Smbusd {

namespace {

void addMuxes( const BoardFiles::TopologyFile &topology, const BoardFiles::TopologyBus &bus,
               std::set<uint8_t> &to ) {
   for ( const BoardFiles::TopologyMux &mux : bus.muxes ) {
      const BoardFiles::TopologyDevice *chip = topology.byDid( mux.did );
      if ( chip && chip->address )
         to.insert( *chip->address );
      for ( const BoardFiles::TopologyBus &behind : mux.busses )
         addMuxes( topology, behind, to );
   }
}

} // namespace

void addMuxes( const BoardFiles::TopologyFile &topology, NamedMuxes &to ) {
   for ( const BoardFiles::TopologyRoot &root : topology.roots )
      addMuxes( topology, root.bus, to[root.id] );
}

void addMuxes( const BoardFiles::RoutesFile &routes, NamedMuxes &to ) {
   for ( const BoardFiles::Route &route : routes.routes )
      to[route.bus].insert( route.muxes.begin(), route.muxes.end() );
}

OpenMuxes::OpenMuxes( const NamedMuxes &muxes, const Bus::RootBusId &bus ) {
   if ( const auto found = muxes.find( bus ); found != muxes.end() )
      named_ = &found->second;
}

// A multiplexer takes the last byte of a write, so a second byte of the offset or a packet error
// code would be its setting.
bool OpenMuxes::take( const Bus::Transfer &transfer ) {
   if ( !named_ || !named_->contains( transfer.address ) || !transfer.isSendByte() ||
        transfer.pec || transfer.offsetBytes != 1 || transfer.offset > 0xFF )
      return false;
   const auto known = std::find_if( open_.begin(), open_.end(), [&transfer]( const Open &one ) {
      return one.address == transfer.address;
   } );
   if ( transfer.offset == 0 ) {
      if ( known != open_.end() )
         open_.erase( known );
   } else if ( known != open_.end() ) {
      known->select = transfer.offset;
   } else {
      open_.push_back( { transfer.address, transfer.offset } );
   }
   return true;
}

std::string OpenMuxes::path() const {
   std::string path;
   for ( const Open &one : open_ )
      path += fmt::format( "{}{:#04x}={}", path.empty() ? "" : " ", one.address, one.select );
   return path;
}

void OpenMuxes::checkClosed( const Bus::Transaction &transaction ) const {
   if ( open_.empty() )
      return;
   throw Bus::Refused( fmt::format(
      "the transaction leaves the multiplexer {0:#04x} on {1} open, and others would reach what is "
      "behind it: close it by a send byte 0x00 to {0:#04x} at the end, as orbis-smbus --via does",
      open_.back().address, toString( transaction.bus ) ) );
}

} // namespace Smbusd
