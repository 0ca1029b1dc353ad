#pragma once

#include "optics/Image.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <pl.h>
#include <string>
#include <vector>

namespace Host {

// One address of a module as an SMBus object of a plug-in. It notes each transfer: "read 128+32",
// "write 127 03", and each pause.
class FakeMemory {
 public:
   FakeMemory();
   FakeMemory( const FakeMemory & ) = delete;
   FakeMemory &operator=( const FakeMemory & ) = delete;

   pl_smbus *proxy() { return &record_; }

   std::map<unsigned, uint8_t> lower{};                    // 0 where nothing is said; not 126, 127
   std::map<uint8_t, std::map<unsigned, uint8_t>> pages{}; // by page
   uint8_t bank = 0, page = 0;

   unsigned longest = 255; // block that can be read
   unsigned misses = 0;    // so many transfers from now on are not acknowledged
   // Called before each transfer, which then sees what it changed.
   std::function<void( const std::string &transfer )> before = []( const auto & ) {};
   std::vector<std::string> transfers{};

 private:
   static FakeMemory &of( pl_smbus *record ) { return *static_cast<FakeMemory *>( record->priv ); }
   bool passes( const std::string &transfer );
   uint8_t at( unsigned number ) const;
   pl_status read( uint8_t command, uint8_t *bytes, unsigned size );
   pl_status write( uint8_t command, const uint8_t *bytes, unsigned size );

   pl_smbus_ops ops_{};
   pl_smbus record_{};
};

} // namespace Host
