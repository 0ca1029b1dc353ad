#pragma once

#include "boardfiles/DriverTable.h"
#include "host/session/BackOff.h"
#include "host/session/FaultWords.h"

#include <cstdint>
#include <map>
#include <optional>

namespace Host {

// Devices that read their cages again and again by themselves: what they hand out is as old as
// their last poll that went well. Knows of the polls from the plug-in's traces.
class Polls {
 public:
   explicit Polls( const BoardFiles::PluginTraces &traces ) : traces_( traces ) {}

   // A new child: every device begins anew.
   void clear() { devices_.clear(); }
   // A trace of a device, by its did.
   void heard( uint32_t did, const Trace &trace, Time now );
   // Makes of a reading what the device's last poll left of it; when the value was polled.
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
