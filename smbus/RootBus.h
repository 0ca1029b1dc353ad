// What carries transfers: the seam between the server and simulated wires or real adapters.
#pragma once

#include "smbus/RootBusId.h"
#include "smbus/Transfer.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace Bus {

// Words that the bench client tells from other failures, too.
inline constexpr std::string_view noAddressAcknowledge = "no acknowledge of the address";
inline constexpr std::string_view noSuchBus = "no such bus";

struct Outcome {
   std::string data;   // what was read: empty for writes, without the count for block reads
   std::string error;  // why the transfer failed; empty when it did not
   bool final = false; // it failed in a way that no further try can mend

   bool ok() const { return error.empty(); }
};

class RootBus {
 public:
   virtual ~RootBus() = default;
   // One transfer from start to stop, and only one try of it. Called from the one thread that
   // works this bus; may take as long as the bus does.
   virtual Outcome transfer( const Transfer & ) = 0;
};

using Busses = std::map<RootBusId, std::unique_ptr<RootBus>>;

} // namespace Bus
