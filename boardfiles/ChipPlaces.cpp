#include "boardfiles/ChipPlaces.h"

#include <fmt/format.h>

namespace BoardFiles {

std::string toText( const ChipPlace &place ) {
   return fmt::format( "{:#04x}{}{} on {}", place.address, place.path.empty() ? "" : " behind ",
                       place.path, place.bus );
}

std::vector<ChipPlace> muxesBefore( const ChipPlace &place ) {
   std::vector<ChipPlace> muxes;
   for ( size_t begin = 0; begin < place.path.size(); ) {
      const size_t end = place.path.find( '=', begin );
      const std::string address = place.path.substr( begin, end - begin );
      muxes.push_back( { .bus = place.bus,
                         .path = begin == 0 ? "" : place.path.substr( 0, begin - 1 ),
                         .address = Bus::parseNumber( address, Bus::maxId ).value_or( 0 ) } );
      const size_t blank = place.path.find( ' ', begin );
      begin = blank == std::string::npos ? place.path.size() : blank + 1;
   }
   return muxes;
}

ChipPlaces::ChipPlaces( const TopologyFile &topology ) : topology_( topology ) {
   for ( const TopologyRoot &root : topology.roots )
      note( root.bus, toString( root.id ), "" );
}

void ChipPlaces::note( const TopologyBus &bus, const std::string &root, const std::string &path ) {
   for ( const TopologyDevice &device : bus.devices )
      places_[device.did] = { root, path, device.address.value_or( 0 ) };
   for ( const TopologyMux &mux : bus.muxes ) {
      const auto chip = places_.find( mux.did );
      if ( chip == places_.end() )
         continue;
      for ( const TopologyBus &behind : mux.busses )
         note( behind, root,
               fmt::format( "{}{}{:#04x}={}", path, path.empty() ? "" : " ", chip->second.address,
                            behind.id ) );
   }
}

std::vector<ChipPlace> ChipPlaces::of( const DeviceDocument &document ) const {
   std::vector<ChipPlace> chips;
   if ( const auto place = document.did ? places_.find( document.did->number ) : places_.end();
        place != places_.end() ) {
      chips.push_back( place->second );
      if ( document.address )
         chips.back().address = document.address->number;
   }
   if ( !document.parts )
      return chips;
   for ( const Json::Member &part : document.parts->members() ) {
      Findings none; // it is known to be good
      if ( const auto json = parseInside( part.value, none ) )
         for ( const ChipPlace &place : of( deviceDocument( *json ) ) )
            chips.push_back( place );
   }
   return chips;
}

std::optional<ChipPlace> ChipPlaces::of( uint32_t did ) const {
   const auto place = places_.find( did );
   return place == places_.end() ? std::nullopt : std::optional( place->second );
}

std::vector<ChipPlace> ChipPlaces::of( std::string_view label ) const {
   const TopologyDevice *device = topology_.byLabel( label );
   const auto place = device ? of( device->did ) : std::nullopt;
   return place ? std::vector{ *place } : std::vector<ChipPlace>();
}

} // namespace BoardFiles
