#include "smbusd/routes/RoutedBusses.h"

#include "smbusd/busses/IoPortBus.h"
#include "smbusd/busses/linux/DevAdapter.h"
#include "smbusd/busses/linux/LinuxBus.h"

#include <fmt/format.h>

namespace Smbusd {

using namespace Linux;

void RoutedBusses::add( const BoardFiles::Route &route, const Warn &warn ) {
   description_.clear();
   if ( route.clock )
      wireClocks_[route.bus] = *route.clock;
   busses_.emplace(
      route.bus,
      std::visit( [&]( const auto &to ) { return make( route, to, warn ); }, route.to ) );
}

std::unique_ptr<Bus::RootBus> RoutedBusses::make( const BoardFiles::Route &route,
                                                  const BoardFiles::SimulatedRoute &,
                                                  const Warn & ) {
   const auto found = simulated_.find( route.bus );
   if ( found == simulated_.end() )
      throw BoardFiles::BoardError(
         route.place, simulated_.empty()
                         ? "no board is simulated"
                         : fmt::format( "the simulated board has no {}", toString( route.bus ) ) );
   description_ = "simulated";
   return std::move( found->second );
}

std::unique_ptr<Bus::RootBus> RoutedBusses::make( const BoardFiles::Route &route,
                                                  const BoardFiles::AdapterRoute &to,
                                                  const Warn &warn ) {
   const auto open = [wanted = to.adapter, places = places_, claims = claims_] {
      return openDevAdapter( findAdapter( wanted, places ), places, claims );
   };
   auto bus = std::make_unique<LinuxBus>( open, to.chips );
   try {
      const unsigned number = findAdapter( to.adapter, places_ );
      description_ = describeAdapter( number, places_ );
      const auto [earlier, isNew] = adapters_.emplace( number, toText( route.place ) );
      if ( !isNew )
         throw BoardFiles::BoardError(
            route.place, fmt::format( "on the same adapter, number {}, as the route at {}", number,
                                      earlier->second ) );
      bus->open();
   } catch ( const AdapterError &error ) {
      if ( !route.optional )
         throw BoardFiles::BoardError( route.place, error.what() );
      warn( fmt::format( "{}: {}", toString( route.bus ), error.what() ) );
   }
   return bus;
}

std::unique_ptr<Bus::RootBus> RoutedBusses::make( const BoardFiles::Route &route,
                                                  const BoardFiles::PortsRoute &to,
                                                  const Warn &warn ) {
   description_ = fmt::format( "{} ports from {:#06x} on", to.size, to.base );
   auto bus = std::make_unique<IoPortBus>( to.base, to.size, "/dev/port", claims_ );
   try {
      bus->open();
   } catch ( const PortError &error ) {
      if ( !route.optional )
         throw BoardFiles::BoardError( route.place, error.what() );
      warn( fmt::format( "{}: {}", toString( route.bus ), error.what() ) );
   }
   return bus;
}

} // namespace Smbusd
