// The kernel's SMBus protocols: a command of one byte, at most 32 bytes of data.
#pragma once

#include "smbus/Transfer.h"

#include <linux/i2c.h>

#include <optional>
#include <string>

namespace Smbusd::Linux {

// One I2C_SMBUS call, and the functions that the adapter needs for it.
struct SmbusCall {
   int size;       // I2C_SMBUS_...
   char readWrite; // I2C_SMBUS_READ or I2C_SMBUS_WRITE
   unsigned long needs;
};

// The call for a transfer, if there is one. Blocks have at most 32 bytes; of these, only SMBus
// blocks can have a packet error code.
std::optional<SmbusCall> smbusCall( const Bus::Transfer & );

// The data for the kernel, and the data that it returned.
i2c_smbus_data dataFor( const SmbusCall &, const Bus::Transfer & );
std::string dataFrom( const SmbusCall &, const Bus::Transfer &, const i2c_smbus_data & );

} // namespace Smbusd::Linux
