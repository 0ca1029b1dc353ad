#pragma once

#include "host/plugin/Messages.h"
#include "host/plugin/ObjectCalls.h"

#include <optional>
#include <pl.h>

namespace Host {

// The reading with a supply's status registers, as Health::Pmbus::toText() writes them.
inline constexpr auto statusRegistersName = "status_registers";

// Reads the status of a power supply with PMBus through an SMBus object. Of a good supply that is
// one word, of another one also the registers that the word points to. The supply's limits are read
// with the first status, and with the first one after a status that could not be read: it may be
// another supply then.
class SupplyReader {
 public:
   // `proxy` must outlive this object.
   explicit SupplyReader( pl_smbus *proxy ) : proxy_( proxy ) {}

   // One reading goes to `sink`. Returns the limits when they were read.
   std::optional<SupplyLimits> read( const ReadingSink &sink );

 private:
   void readStatus( Reading &reading );
   std::optional<SupplyLimits> readLimits() const;
   std::optional<uint16_t> readRegister( uint8_t command ) const;

   pl_smbus *proxy_;
   bool isGood_ = false; // the last status was read
   bool wantsLimits_ = true;
};

} // namespace Host
