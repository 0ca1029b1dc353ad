#pragma once

#include "smbus/RootBusId.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Bus {

// One SMBus operation. It is valid.
struct Transfer {
   enum class Kind { Read, Write, ProcessCall, BlockRead, BlockWrite };

   Kind kind = Kind::Read;
   uint8_t address = 0;      // seven bits
   uint32_t offset = 0;      // register or command code, of any width
   unsigned offsetBytes = 1; // its width on a real bus, as the client says: 1 or 2
   unsigned length = 0;      // data bytes to read or write; 0 for a block read
   std::string data = {};    // to write, `length` bytes
   bool pec = false;         // with a packet error code after the data
   // On a real bus: how long the adapter waits for the chip (0: the adapter's default), and a pause
   // after the transfer.
   std::chrono::milliseconds timeout{ 0 };
   std::chrono::milliseconds pause{ 0 };

   // The offset is the only byte that is sent. This is how multiplexers are set.
   bool isSendByte() const { return kind == Kind::Write && length == 0; }
   // Gets data and gives none but the offset.
   bool isRead() const { return kind == Kind::Read || kind == Kind::BlockRead; }
   // Reads one byte without sending an offset.
   bool isReceiveByte() const { return kind == Kind::Read && length == 0; }
};

// "read of 2 bytes from 0x48 register 0x00", as in error texts.
std::string describe( const Transfer & );

// Transfers on one root bus. Nothing else happens on the bus between them.
struct Transaction {
   RootBusId bus;
   std::vector<Transfer> transfers;
   unsigned retries = 0;              // further tries of each transfer
   std::chrono::milliseconds limit{}; // for all of it
};

// "request 2 of 3: read of ... on i2c:0: REASON", as in error texts.
std::string describe( const Transaction &, size_t index, std::string_view reason );

} // namespace Bus
