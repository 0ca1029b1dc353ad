// The bus address of one device, as it is sent to the SMBus server.
#pragma once

#include <cstdint>

struct AhamAddress {
   uint32_t offset;      // register offset (command code) of the request
   uint32_t address : 7; // 7-bit device address
   uint32_t bus : 7;     // root bus: the bus that the accelerator drives
   uint32_t accel : 7;   // accelerator
   uint32_t spare : 1;
   uint32_t busTimeout : 3;
   uint32_t addrSize : 2; // bytes of register offset on the bus
   uint32_t extraDelay : 1;
   uint32_t writeDelay : 2;
   uint32_t readDelay : 2;
};

static_assert( sizeof( AhamAddress ) == 8, "two 32-bit words in every ABI" );
