// A transfer as I2C messages, which know no limit of 32 bytes and commands of any width.
#pragma once

#include "smbus/Transfer.h"

#include <linux/i2c.h>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace Smbusd::Linux {

// The kernel takes no longer ones in I2C_RDWR.
inline constexpr size_t maxMessageBytes = 8192;

// Its packet error code is this program's own work: the kernel adds none to messages.
class Messages {
 public:
   // A block read has none: its length is known to the chip alone.
   static bool canBe( const Bus::Transfer &transfer ) {
      return transfer.kind != Bus::Transfer::Kind::BlockRead;
   }

   Messages( const Bus::Transfer &, unsigned offsetBytes );
   Messages( const Messages & ) = delete;
   Messages &operator=( const Messages & ) = delete;

   std::span<i2c_msg> list() { return messages_; } // refers into this object
   bool tooLong() const;
   // What was read; when its packet error code is wrong, nothing and why in the error.
   std::string data( std::string &error ) const;

 private:
   const bool pec_;
   std::vector<uint8_t> written_; // first message's bytes
   std::vector<uint8_t> read_;    // last message's
   std::vector<i2c_msg> messages_;
};

} // namespace Smbusd::Linux
