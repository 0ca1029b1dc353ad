#pragma once

#include "boardfiles/DriverTable.h"
#include "host/session/BackOff.h"
#include "host/session/FaultWords.h"

#include <cstdint>
#include <map>
#include <optional>

namespace Host {

// Devices that poll their cages with a timer. The values that they return are as old as their last
// good poll. The plug-in's traces tell when a poll was done or failed.
class Polls {
 public:
   explicit Polls( const BoardFiles::PluginTraces &traces ) : traces_( traces ) {}

   // Forgets all polls, for a new child.
   void clear() { devices_.clear(); }
   // A trace of the device with this did.
   void heard( uint32_t did, const Trace &trace, Time now );
   // Makes a reading stale or unreadable if the device's last poll failed. Returns the time at
   // which the value was polled.
   Time classify( std::optional<uint32_t> did, Reading &reading, Time now ) const;

 private:
   struct Device {
      explicit Device( const BoardFiles::PluginTraces &traces ) : words( traces.faults ) {}

      FaultWords words;
      bool failed = false;
      Fault fault{};
      std::optional<Time> succeeded{};
   };

   const BoardFiles::PluginTraces &traces_;
   std::map<uint32_t, Device> devices_{};
};

} // namespace Host
