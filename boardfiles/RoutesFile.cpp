#include "boardfiles/RoutesFile.h"

#include "boardfiles/RootBusText.h"
#include "boardfiles/Schema.h"

#include <fmt/format.h>

#include <algorithm>

namespace BoardFiles {

namespace {

constexpr uint32_t portCount = 0x10000;

// Reads routes that the schema has let pass.
class RoutesReader {
 public:
   explicit RoutesReader( Findings &findings ) : findings_( findings ) {}

   RoutesFile read( const Json &json ) {
      RoutesFile routes;
      for ( const Json &entry : json.elementsOf( "routes" ) ) {
         Route route = routeIn( entry );
         for ( const Route &earlier : routes.routes )
            checkBeside( earlier, route );
         routes.routes.push_back( std::move( route ) );
      }
      return routes;
   }

 private:
   Route routeIn( const Json &entry ) {
      const Json *optional = entry.find( "optional" );
      Route route{ rootBusIn( *entry.find( "bus" ), findings_ ).value_or( Bus::RootBusId() ),
                   {},
                   optional && optional->isTrue(),
                   entry.unsignedOf( "clock" ),
                   {},
                   entry.place() };
      for ( const Json &mux : entry.elementsOf( "muxes" ) )
         route.muxes.push_back( static_cast<uint8_t>( *mux.toUnsigned() ) );
      if ( const Json *adapter = entry.find( "adapter" ) )
         route.to = AdapterRoute{ adapterIn( *adapter ), chipsIn( entry ) };
      else if ( const Json *chips = entry.find( "chips" ) )
         report( findings_, chips->place(), "only the route of an adapter can have chips" );
      else if ( const Json *ports = entry.find( "ports" ) )
         route.to = portsIn( *ports );
      if ( const Json *clock = entry.find( "clock" );
           clock && std::holds_alternative<PortsRoute>( route.to ) )
         report( findings_, clock->place(), "I/O ports have no clock" );
      return route;
   }

   static WantedAdapter adapterIn( const Json &json ) {
      if ( const auto number = json.unsignedOf( "number" ) )
         return AdapterNumber{ *number };
      if ( const auto name = json.textOf( "name" ) )
         return AdapterName{ *name };
      return AdapterPath{ *json.textOf( "path" ) };
   }

   std::map<uint8_t, ChipRules> chipsIn( const Json &route ) {
      std::map<uint8_t, ChipRules> chips;
      for ( const Json &entry : route.elementsOf( "chips" ) ) {
         const auto address = static_cast<uint8_t>( *entry.unsignedOf( "address" ) );
         const Json *force = entry.find( "force" );
         const ChipRules rules{ entry.unsignedOf( "offsetBytes" ).value_or( 0 ),
                                force && force->isTrue() };
         if ( !chips.emplace( address, rules ).second )
            report( findings_, entry.place(),
                    fmt::format( "address {:#04x} has an entry already", address ) );
      }
      return chips;
   }

   PortsRoute portsIn( const Json &json ) {
      const PortsRoute ports{ *json.unsignedOf( "base" ), *json.unsignedOf( "size" ) };
      if ( ports.size > portCount - ports.base )
         report( findings_, json.place(),
                 fmt::format( "{} ports from {:#06x} on go beyond the last, {:#06x}", ports.size,
                              ports.base, portCount - 1 ) );
      return ports;
   }

   static bool overlap( const PortsRoute &one, const PortsRoute &other ) {
      return one.base < other.base + other.size && other.base < one.base + one.size;
   }

   void checkBeside( const Route &earlier, const Route &route ) {
      const auto complain = [&]( const std::string &what ) {
         report( findings_, route.place,
                 fmt::format( "{} as the route at {}", what, toText( earlier.place ) ) );
      };
      if ( earlier.bus == route.bus )
         complain( fmt::format( "the same bus, {},", toString( route.bus ) ) );
      const auto *adapter = std::get_if<AdapterRoute>( &route.to );
      const auto *earlierAdapter = std::get_if<AdapterRoute>( &earlier.to );
      if ( adapter && earlierAdapter && adapter->adapter == earlierAdapter->adapter )
         complain( "the same adapter" );
      const auto *ports = std::get_if<PortsRoute>( &route.to );
      const auto *earlierPorts = std::get_if<PortsRoute>( &earlier.to );
      if ( ports && earlierPorts && overlap( *ports, *earlierPorts ) )
         complain( "some of the same ports" );
   }

   Findings &findings_;
};

} // namespace

RoutesFile loadRoutes( const std::filesystem::path &path ) {
   static const Schema schema( routesSchema );
   Findings findings;
   RoutesFile routes;
   if ( const auto json = readJson( path, findings ) ) {
      schema.check( *json, findings );
      throwErrors( findings );
      routes = RoutesReader( findings ).read( *json );
   }
   throwErrors( findings );
   return routes;
}

} // namespace BoardFiles
