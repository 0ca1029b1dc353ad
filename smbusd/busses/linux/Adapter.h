// The calls of i2c-dev for one adapter. Tests replace the kernel here.
#pragma once

#include <linux/i2c.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>

namespace Smbusd::Linux {

// The adapter does not exist or can't be used; the text says which, and why.
struct AdapterError : std::runtime_error {
   using std::runtime_error::runtime_error;
};

// Calls that return an int return 0 or an errno value.
class Adapter {
 public:
   virtual ~Adapter() = default;

   virtual int functions( unsigned long &bits ) = 0; // I2C_FUNCS: I2C_FUNC_...
   // I2C_SLAVE, which returns EBUSY if a kernel driver holds the address; or I2C_SLAVE_FORCE.
   virtual int address( uint8_t address, bool force ) = 0;
   virtual int pec( bool on ) = 0;                       // I2C_PEC: only for smbus()
   virtual int timeout( std::chrono::milliseconds ) = 0; // I2C_TIMEOUT, in steps of 10 ms
   // I2C_SMBUS: one SMBus protocol; size is I2C_SMBUS_BYTE_DATA and its like.
   virtual int smbus( char readWrite, uint8_t command, int size, i2c_smbus_data *data ) = 0;
   // I2C_RDWR: messages with repeated starts between them. Does not check the owner.
   virtual int messages( std::span<i2c_msg> ) = 0;

   // The kernel driver that holds the address; empty if unknown.
   virtual std::string driverAt( uint8_t address ) = 0;
   virtual void pause( std::chrono::milliseconds ) = 0;
};

// The meaning of an errno value of an adapter's driver (Documentation/i2c/fault-codes of the
// kernel); for other values, the system's text.
std::string explain( int error );

// The names of the functions (I2C_FUNC_I2C), separated by commas.
std::string functionNames( unsigned long bits );

} // namespace Smbusd::Linux
