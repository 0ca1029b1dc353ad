#pragma once

#include "busses/RootBus.h"
#include "busses/linux/Adapter.h"
#include "busses/linux/SmbusCall.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>

namespace Smbusd::Linux {

// What isn't the usual about one address.
struct ChipRules {
   unsigned offsetBytes = 0; // of its registers on the wires; 0: as the client says
   bool force = false;       // used although a kernel driver holds it
};

// A root bus that is an adapter of this machine. What the adapter can't do is refused by the name
// of the function that it lacks, before anything is on the wires.
class LinuxBus final : public RootBus {
 public:
   using Open = std::function<std::unique_ptr<Adapter>()>; // throws AdapterError

   // Asks for the adapter when it is first needed, and again while there is none.
   LinuxBus( Open open, std::map<uint8_t, ChipRules> chips )
      : openAdapter_( std::move( open ) ), chips_( std::move( chips ) ) {}
   // Asks at once. Throws AdapterError.
   void open();

   Outcome transfer( const Transfer & ) override;

 private:
   Outcome carryOut( const Transfer & );
   void address( const Transfer &, const ChipRules & );
   Outcome smbus( const SmbusCall &, const Transfer & );
   Outcome messages( const Transfer &, unsigned offsetBytes );
   void timeoutIs( std::chrono::milliseconds );

   const Open openAdapter_;
   const std::map<uint8_t, ChipRules> chips_;
   std::unique_ptr<Adapter> adapter_;
   unsigned long functions_ = 0;
   bool pec_ = false;                       // as the adapter has it now
   std::chrono::milliseconds timeout_{ 0 }; // 0: never set
};

} // namespace Smbusd::Linux
