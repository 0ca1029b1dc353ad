#include "boardfiles/RoutesFile.h"

#include "boardfiles/FirstFinding.h"

#include <fmt/format.h>

#include <algorithm>

namespace BoardFiles {

namespace {

constexpr uint32_t portCount = 0x10000;

void checkSchema( const JsonFile &file ) {
   rapidjson::Document schema;
   schema.Parse( routesSchema.data(), routesSchema.size() );
   if ( const auto finding = findAgainst( schema, file.document ) )
      throw BoardError::at( file.path, asText( finding->place ), finding->reason );
}

Bus::RootBusId busAt( const JsonPlace &place ) {
   const auto bus = Bus::parseRootBusId( place.text() );
   if ( !bus )
      place.fail( fmt::format(
         "\"{}\" is no bus; i2c:0, scd(4):1:2, celestica:1:1 and ioport:0 are", place.text() ) );
   return *bus;
}

WantedAdapter adapterAt( const JsonPlace &place ) {
   if ( const auto number = place.find( "number" ) )
      return AdapterNumber{ number->number() };
   if ( const auto name = place.find( "name" ) )
      return AdapterName{ name->text() };
   return AdapterPath{ place.member( "path" ).text() };
}

std::map<uint8_t, ChipRules> chipsAt( const JsonPlace &route ) {
   std::map<uint8_t, ChipRules> chips;
   for ( const JsonPlace &place : route.elementsOf( "chips" ) ) {
      const auto address = static_cast<uint8_t>( place.member( "address" ).number() );
      ChipRules rules;
      if ( const auto bytes = place.find( "offsetBytes" ) )
         rules.offsetBytes = bytes->number();
      if ( const auto force = place.find( "force" ) )
         rules.force = force->truth();
      if ( !chips.emplace( address, rules ).second )
         place.fail( fmt::format( "address {:#04x} has an entry already", address ) );
   }
   return chips;
}

PortsRoute portsAt( const JsonPlace &place ) {
   const PortsRoute ports{ place.member( "base" ).number(), place.member( "size" ).number() };
   if ( ports.size > portCount - ports.base )
      place.fail( fmt::format( "{} ports from {:#06x} on reach beyond the last, {:#06x}",
                               ports.size, ports.base, portCount - 1 ) );
   return ports;
}

Route routeAt( const JsonPlace &place ) {
   const auto optional = place.find( "optional" );
   Route route{ busAt( place.member( "bus" ) ), {}, optional && optional->truth(), place };
   if ( const auto adapter = place.find( "adapter" ) )
      route.to = AdapterRoute{ adapterAt( *adapter ), chipsAt( place ) };
   else if ( const auto chips = place.find( "chips" ) )
      chips->fail( "only an adapter's route tells of chips" );
   else if ( const auto ports = place.find( "ports" ) )
      route.to = portsAt( *ports );
   return route;
}

bool overlap( const PortsRoute &one, const PortsRoute &other ) {
   return one.base < other.base + other.size && other.base < one.base + one.size;
}

void checkBeside( const Route &earlier, const Route &route ) {
   const auto fail = [&]( const std::string &what ) {
      route.place.fail( fmt::format( "{}, like {}", what, earlier.place.pointer() ) );
   };
   if ( earlier.bus == route.bus )
      fail( fmt::format( "a route of {}", toString( route.bus ) ) );
   const auto *adapter = std::get_if<AdapterRoute>( &route.to );
   const auto *earlierAdapter = std::get_if<AdapterRoute>( &earlier.to );
   if ( adapter && earlierAdapter && adapter->adapter == earlierAdapter->adapter )
      fail( "on the same adapter" );
   const auto *ports = std::get_if<PortsRoute>( &route.to );
   const auto *earlierPorts = std::get_if<PortsRoute>( &earlier.to );
   if ( ports && earlierPorts && overlap( *ports, *earlierPorts ) )
      fail( "with some of the same ports" );
}

} // namespace

std::unique_ptr<const RoutesFile> loadRoutes( const std::string &path ) {
   auto routes = std::make_unique<RoutesFile>();
   routes->file = readJsonFile( path );
   checkSchema( routes->file );
   for ( const JsonPlace &place : JsonPlace( routes->file ).elementsOf( "routes" ) ) {
      Route route = routeAt( place );
      for ( const Route &earlier : routes->routes )
         checkBeside( earlier, route );
      routes->routes.push_back( std::move( route ) );
   }
   return routes;
}

} // namespace BoardFiles
