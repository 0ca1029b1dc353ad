// The SMBus protocols as the kernel has them: a command of one byte, at most 32 bytes of data.
#pragma once

#include "smbus/Transfer.h"

#include <linux/i2c.h>

#include <optional>
#include <string>

namespace Smbusd::Linux {

// One I2C_SMBUS call, and the functions that the adapter must have for it.
struct SmbusCall {
   int size;       // I2C_SMBUS_...
   char readWrite; // I2C_SMBUS_READ or I2C_SMBUS_WRITE
   unsigned long needs;
};

// The call that is the transfer, if one is: blocks don't reach beyond 32 bytes, and carry a packet
// error code only where the chip counts them.
std::optional<SmbusCall> smbusCall( const Bus::Transfer & );

// What the call hands to the kernel, and what it brought back.
i2c_smbus_data dataFor( const SmbusCall &, const Bus::Transfer & );
std::string dataFrom( const SmbusCall &, const Bus::Transfer &, const i2c_smbus_data & );

} // namespace Smbusd::Linux
