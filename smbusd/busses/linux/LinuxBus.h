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

// A root bus that is an i2c adapter of this machine. If the adapter lacks a function for a
// transfer, the error names that function, and nothing happens on the bus.
class LinuxBus final : public Bus::RootBus {
 public:
   using Open = std::function<std::unique_ptr<Adapter>()>; // throws AdapterError

   // The first transfer opens the adapter; while that fails, each transfer tries again.
   LinuxBus( Open open, std::map<uint8_t, BoardFiles::ChipRules> chips )
      : openAdapter_( std::move( open ) ), chips_( std::move( chips ) ) {}
   // Opens it now. Throws AdapterError.
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
   bool pec_ = false;                       // the adapter's present setting
   std::chrono::milliseconds timeout_{ 0 }; // 0: never set
};

} // namespace Smbusd::Linux
