// A bus that executes transfers: the interface between the server and simulated or real busses.
#pragma once

#include "smbus/RootBusId.h"
#include "smbus/Transfer.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Bus {

// orbis-smbus recognises these texts, too.
inline constexpr std::string_view noAddressAcknowledge = "no acknowledge of the address";
inline constexpr std::string_view noSuchBus = "no such bus";

struct Outcome {
   std::string data = {};  // that was read; empty for writes; without the count for block reads
   std::string error = {}; // why the transfer failed; empty: success
   bool final = false;     // it failed, and a retry can't help
   // On the wires, with addresses and packet error codes, where the bus knows: up to the one that
   // was not acknowledged. None while a line was held low.
   std::optional<unsigned> bytes = {};

   bool ok() const { return error.empty(); }
};

class RootBus {
 public:
   virtual ~RootBus() = default;
   // Tries one transfer once, from start to stop. Only the thread of this bus calls it. It may take
   // as long as the bus does.
   virtual Outcome transfer( const Transfer & ) = 0;
   // Two ways to free a line that a chip holds low. False: this bus has none of that kind.
   // Nine clocks and a stop: a chip that is in the middle of a byte ends it (NXP UM10204, "Bus
   // clear").
   virtual bool clearLines() { return false; }
   // A pulse on the reset pin of the multiplexer at this address, which then joins no channel.
   virtual bool resetMux( uint8_t ) { return false; }
};

using Busses = std::map<RootBusId, std::unique_ptr<RootBus>>;

} // namespace Bus
