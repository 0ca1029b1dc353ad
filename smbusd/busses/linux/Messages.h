// A transfer as I2C messages: data can be longer than 32 bytes, and registers can have any width.
#pragma once

#include "smbus/Transfer.h"

#include <linux/i2c.h>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace Smbusd::Linux {

// The limit of I2C_RDWR.
inline constexpr size_t maxMessageBytes = 8192;

// The kernel adds no packet error code to messages, so this class does.
class Messages {
 public:
   // A block read is impossible: only the chip knows its length.
   static bool canBe( const Bus::Transfer &transfer ) {
      return transfer.kind != Bus::Transfer::Kind::BlockRead;
   }

   Messages( const Bus::Transfer &, unsigned offsetBytes );
   Messages( const Messages & ) = delete;
   Messages &operator=( const Messages & ) = delete;

   std::span<i2c_msg> list() { return messages_; } // valid as long as this object
   bool tooLong() const;
   // The data that was read. If its packet error code is wrong: nothing, and the reason in error.
   std::string data( std::string &error ) const;

 private:
   const bool pec_;
   std::vector<uint8_t> written_; // first message's bytes
   std::vector<uint8_t> read_;    // last message's
   std::vector<i2c_msg> messages_;
};

} // namespace Smbusd::Linux
