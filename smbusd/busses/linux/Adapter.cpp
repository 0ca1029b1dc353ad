#include "smbusd/busses/linux/Adapter.h"

#include "smbus/RootBus.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>

namespace Smbusd::Linux {

std::string explain( int error ) {
   switch ( error ) {
   case ENXIO:
   case ENODEV: // of i2c-stub
      return std::string( Bus::noAddressAcknowledge );
   case EREMOTEIO: // of the address or of a byte: many drivers don't distinguish them
      return "no acknowledge";
   case EAGAIN:
      return "arbitration lost";
   case ETIMEDOUT:
      return "the adapter's timeout is over";
   case EBADMSG:
      return "wrong PEC";
   case EPROTO:
      return "the chip's answer violates the SMBus protocol";
   case EBUSY:
      return "the bus stays busy";
   case EOPNOTSUPP:
      return "the adapter's driver can't do it";
   default:
      return std::strerror( error );
   }
}

std::string functionNames( unsigned long bits ) {
   constexpr struct {
      unsigned long bit;
      const char *name;
   } names[] = {
      { I2C_FUNC_I2C, "I2C_FUNC_I2C" },
      { I2C_FUNC_SMBUS_PEC, "I2C_FUNC_SMBUS_PEC" },
      { I2C_FUNC_SMBUS_READ_BYTE, "I2C_FUNC_SMBUS_READ_BYTE" },
      { I2C_FUNC_SMBUS_WRITE_BYTE, "I2C_FUNC_SMBUS_WRITE_BYTE" },
      { I2C_FUNC_SMBUS_READ_BYTE_DATA, "I2C_FUNC_SMBUS_READ_BYTE_DATA" },
      { I2C_FUNC_SMBUS_WRITE_BYTE_DATA, "I2C_FUNC_SMBUS_WRITE_BYTE_DATA" },
      { I2C_FUNC_SMBUS_READ_WORD_DATA, "I2C_FUNC_SMBUS_READ_WORD_DATA" },
      { I2C_FUNC_SMBUS_WRITE_WORD_DATA, "I2C_FUNC_SMBUS_WRITE_WORD_DATA" },
      { I2C_FUNC_SMBUS_PROC_CALL, "I2C_FUNC_SMBUS_PROC_CALL" },
      { I2C_FUNC_SMBUS_READ_BLOCK_DATA, "I2C_FUNC_SMBUS_READ_BLOCK_DATA" },
      { I2C_FUNC_SMBUS_WRITE_BLOCK_DATA, "I2C_FUNC_SMBUS_WRITE_BLOCK_DATA" },
      { I2C_FUNC_SMBUS_READ_I2C_BLOCK, "I2C_FUNC_SMBUS_READ_I2C_BLOCK" },
      { I2C_FUNC_SMBUS_WRITE_I2C_BLOCK, "I2C_FUNC_SMBUS_WRITE_I2C_BLOCK" },
   };
   std::string text;
   for ( const auto &[bit, name] : names ) {
      if ( bits & bit )
         text += text.empty() ? name : fmt::format( ", {}", name );
   }
   return text;
}

} // namespace Smbusd::Linux
