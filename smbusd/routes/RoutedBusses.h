#pragma once

#include "boardfiles/RoutesFile.h"
#include "smbus/RootBus.h"
#include "smbusd/busses/linux/AdapterFinder.h"

#include <functional>
#include <string>

namespace Smbusd {

// Makes the busses that routes lead to, and opens them, which shows whether they are there and may
// be used.
class RoutedBusses {
 public:
   // Without a simulated board its busses are none. Real busses that are served are claimed for
   // this process; those that are only looked at may be another's.
   enum class Use { Serves, Looks };
   RoutedBusses( Bus::Busses simulated, Linux::Places places, Use use )
      : simulated_( std::move( simulated ) ), places_( std::move( places ) ),
        claims_( use == Use::Serves ) {}

   // What is said of an optional route whose bus is not to be had yet.
   using Warn = std::function<void( const std::string & )>;
   // Throws BoardError at the route: its bus isn't to be had and it isn't optional, or it leads to
   // an adapter to which another does, under whatever name.
   void add( const BoardFiles::Route &, const Warn & );

   // All that were added. What is asked for in a transfer is what the routes name, nothing else.
   Bus::Busses take() { return std::move( busses_ ); }
   // Of the wires, in Hz, of those busses whose routes say it.
   const std::map<Bus::RootBusId, uint32_t> &wireClocks() const { return wireClocks_; }
   // What carries the bus that was added last, for people.
   const std::string &description() const { return description_; }

 private:
   std::unique_ptr<Bus::RootBus> make( const BoardFiles::Route &,
                                       const BoardFiles::SimulatedRoute &, const Warn & );
   std::unique_ptr<Bus::RootBus> make( const BoardFiles::Route &, const BoardFiles::AdapterRoute &,
                                       const Warn & );
   std::unique_ptr<Bus::RootBus> make( const BoardFiles::Route &, const BoardFiles::PortsRoute &,
                                       const Warn & );

   Bus::Busses simulated_;
   const Linux::Places places_;
   const bool claims_;
   std::map<unsigned, std::string> adapters_; // by number, the place of the route there
   Bus::Busses busses_;
   std::map<Bus::RootBusId, uint32_t> wireClocks_;
   std::string description_;
};

} // namespace Smbusd
