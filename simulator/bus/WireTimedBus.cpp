#include "simulator/bus/WireTimedBus.h"

#include "smbus/WireTime.h"

#include <sys/prctl.h>

#include <chrono>
#include <thread>

namespace Simulator {

namespace {

// The kernel lets a thread sleep up to 50 us longer than it wants to, unless it asks for less. That
// is as long as five bits.
void sleepUntil( std::chrono::steady_clock::time_point end ) {
   thread_local const int asked = prctl( PR_SET_TIMERSLACK, 1ul );
   static_cast<void>( asked );
   std::this_thread::sleep_until( end );
}

} // namespace

Bus::Outcome WireTimedBus::transfer( const Bus::Transfer &transfer ) {
   const auto begun = std::chrono::steady_clock::now();
   Bus::Outcome outcome = bus_->transfer( transfer );
   sleepUntil( begun + Bus::wireTime( Bus::onTheWires( transfer, outcome ), clock_ ) );
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
