#include "host/session/Polls.h"

namespace Host {
namespace {

bool begins( const Trace &trace, const std::string &beginning ) {
   return !beginning.empty() && trace.text.starts_with( beginning );
}

} // namespace

void Polls::heard( uint32_t did, const Trace &trace, Time now ) {
   Device &device = devices_.try_emplace( did, traces_ ).first->second;
   device.words.heard( trace );
   const bool done = begins( trace, traces_.pollDone );
   if ( !done && !begins( trace, traces_.pollFailed ) )
      return;
   device.failed = !done;
   device.fault.words = done ? "" : device.words.words();
   if ( done )
      device.succeeded = now;
   device.words.operationBegins();
}

Time Polls::classify( std::optional<uint32_t> did, Reading &reading, Time now ) const {
   const auto found = did ? devices_.find( *did ) : devices_.end();
   const bool isGood = reading.state == State::Ok || reading.state == State::Absent;
   if ( found == devices_.end() || !found->second.failed || !isGood )
      return now;
   const Device &device = found->second;
   if ( reading.state == State::Absent )
      reading.value = false;
   reading.fault = device.fault;
   if ( device.succeeded ) {
      reading.state = State::Stale;
      return *device.succeeded;
   }
   reading.state = State::Unreadable;
   reading.value = {};
   return now;
}

} // namespace Host
