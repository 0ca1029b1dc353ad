#pragma once

#include "boardfiles/RoutesFile.h"
#include "smbus/RootBus.h"
#include "smbusd/busses/linux/Adapter.h"
#include "smbusd/busses/linux/SmbusCall.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>

namespace Smbusd::Linux {

// A root bus that is an adapter of this machine. What the adapter can't do is refused by the name
// of the function that it lacks, before anything is on the wires.
class LinuxBus final : public Bus::RootBus {
 public:
   using Open = std::function<std::unique_ptr<Adapter>()>; // throws AdapterError

   // Asks for the adapter when it is first needed, and again while there is none.
   LinuxBus( Open open, std::map<uint8_t, BoardFiles::ChipRules> chips )
      : openAdapter_( std::move( open ) ), chips_( std::move( chips ) ) {}
   // Asks at once. Throws AdapterError.
   void open();

   Bus::Outcome transfer( const Bus::Transfer & ) override;

 private:
   Bus::Outcome execute( const Bus::Transfer & );
   void address( const Bus::Transfer &, const BoardFiles::ChipRules & );
   Bus::Outcome smbus( const SmbusCall &, const Bus::Transfer & );
   Bus::Outcome messages( const Bus::Transfer &, unsigned offsetBytes );
   void timeoutIs( std::chrono::milliseconds );

   const Open openAdapter_;
   const std::map<uint8_t, BoardFiles::ChipRules> chips_;
   std::unique_ptr<Adapter> adapter_;
   unsigned long functions_ = 0;
   bool pec_ = false;                       // as the adapter has it now
   std::chrono::milliseconds timeout_{ 0 }; // 0: never set
};

} // namespace Smbusd::Linux
