#include "simulator/bus/WireTimedBus.h"

#include "smbus/WireTime.h"

#include <chrono>
#include <thread>

namespace Simulator {

namespace {

// A thread wakes up some 50 us later than it wants to, which is as long as five bits. So it wakes
// up before the end, and waits for that.
void waitUntil( std::chrono::steady_clock::time_point end ) {
   constexpr std::chrono::microseconds late( 100 );
   std::this_thread::sleep_until( end - late );
   while ( std::chrono::steady_clock::now() < end ) {
   }
}

} // namespace

Bus::Outcome WireTimedBus::transfer( const Bus::Transfer &transfer ) {
   const auto begun = std::chrono::steady_clock::now();
   Bus::Outcome outcome = bus_->transfer( transfer );
   waitUntil( begun + Bus::wireTime( Bus::onTheWires( transfer, outcome ), clock_ ) );
   return outcome;
}

Bus::Busses wireTimed( Bus::Busses busses, const std::map<Bus::RootBusId, uint32_t> &clocks ) {
   for ( auto &[id, bus] : busses ) {
      if ( id.master == Bus::Master::IoPort )
         continue;
      const auto found = clocks.find( id );
      bus = std::make_unique<WireTimedBus>(
         std::move( bus ), found == clocks.end() ? Bus::usualClock : found->second );
   }
   return busses;
}

} // namespace Simulator
