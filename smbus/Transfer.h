#pragma once

#include "smbus/RootBusId.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace Bus {

// One SMBus operation, checked for sense.
struct Transfer {
   enum class Kind { Read, Write, ProcessCall, BlockRead, BlockWrite };

   Kind kind = Kind::Read;
   uint8_t address = 0;      // seven bits
   uint32_t offset = 0;      // register, or command code; whole, however wide the chip's is
   unsigned offsetBytes = 1; // what the client says of its width on a real bus: 1 or 2
   unsigned length = 0;      // data bytes to read or write; 0 for a block read
   std::string data = {};    // to write, `length` bytes
   bool pec = false;         // with a packet error code behind the data
   // On a real bus: how long its adapter waits for the chip, 0 for as long as it always does, and
   // the rest that the chip gets behind the transfer.
   std::chrono::milliseconds timeout{ 0 };
   std::chrono::milliseconds pause{ 0 };

   // The offset is the byte that is sent, and nothing follows it. Multiplexers are set so.
   bool isSendByte() const { return kind == Kind::Write && length == 0; }
   // No offset goes out before the byte comes.
   bool isReceiveByte() const { return kind == Kind::Read && length == 0; }
};

// "read of 2 bytes from 0x48 register 0x00", as error texts have it.
std::string describe( const Transfer & );

// Transfers that nothing else comes between, all on one root bus.
struct Transaction {
   RootBusId bus;
   std::vector<Transfer> transfers;
   unsigned retries = 0;              // further tries of each transfer
   std::chrono::milliseconds limit{}; // for all of it
};

} // namespace Bus
