// A bus on a scripted adapter, and transfers to the chip at 0x48.
#pragma once

#include "ScriptedAdapter.h"
#include "smbusd/busses/linux/LinuxBus.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>

namespace SmbusdTest {

inline constexpr unsigned long everything = I2C_FUNC_I2C | I2C_FUNC_SMBUS_EMUL_ALL;
inline constexpr unsigned long plainI2c = I2C_FUNC_I2C;
inline constexpr unsigned long smbusOnly = I2C_FUNC_SMBUS_EMUL & ~I2C_FUNC_SMBUS_PEC;

class LinuxBusFixture : public ::testing::Test {
 protected:
   using Transfer = Bus::Transfer;

   // Makes the bus with this adapter. The caller then adds the calls that it expects.
   ScriptedAdapter &adapterWith( unsigned long functions,
                                 std::map<uint8_t, BoardFiles::ChipRules> chips = {} ) {
      using Smbusd::Linux::Adapter;
      auto made = std::make_unique<ScriptedAdapter>( functions );
      ScriptedAdapter &adapter = *made;
      bus = std::make_unique<Smbusd::Linux::LinuxBus>(
         [kept = std::make_shared<std::unique_ptr<Adapter>>( std::move( made ) )] {
            return std::move( *kept );
         },
         std::move( chips ) );
      return adapter;
   }
   std::string errorOf( const Transfer &transfer ) {
      const Bus::Outcome outcome = bus->transfer( transfer );
      EXPECT_EQ( outcome.data, "" );
      return outcome.error;
   }
   static Transfer read( uint32_t offset, unsigned length ) {
      return { .kind = Transfer::Kind::Read, .address = 0x48, .offset = offset, .length = length };
   }
   static Transfer write( uint32_t offset, const std::string &data ) {
      return { .kind = Transfer::Kind::Write,
               .address = 0x48,
               .offset = offset,
               .length = static_cast<unsigned>( data.size() ),
               .data = data };
   }
   static Transfer with( Transfer::Kind kind, Transfer transfer ) {
      transfer.kind = kind;
      return transfer;
   }
   static Transfer pec( Transfer transfer ) {
      transfer.pec = true;
      return transfer;
   }
   std::unique_ptr<Smbusd::Linux::LinuxBus> bus;
};

} // namespace SmbusdTest
