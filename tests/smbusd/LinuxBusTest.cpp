#include "smbusd/busses/linux/LinuxBus.h"
#include "ScriptedAdapter.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cerrno>

namespace SmbusdTest {

namespace {

using namespace BoardFiles;
using namespace Bus;
using namespace Smbusd;
using namespace Smbusd::Linux;
using namespace std::chrono_literals;
using namespace std::string_literals;
using Kind = Transfer::Kind;

constexpr unsigned long everything = I2C_FUNC_I2C | I2C_FUNC_SMBUS_EMUL_ALL;
constexpr unsigned long plainI2c = I2C_FUNC_I2C;
constexpr unsigned long smbusOnly = I2C_FUNC_SMBUS_EMUL & ~I2C_FUNC_SMBUS_PEC;

class LinuxBusTest : public ::testing::Test {
 protected:
   // Makes the bus of this adapter; what is expected of it is said afterwards.
   ScriptedAdapter &adapterWith( unsigned long functions,
                                 std::map<uint8_t, ChipRules> chips = {} ) {
      auto made = std::make_unique<ScriptedAdapter>( functions );
      ScriptedAdapter &adapter = *made;
      bus = std::make_unique<LinuxBus>( [kept = std::make_shared<std::unique_ptr<Adapter>>(
                                            std::move( made ) )] { return std::move( *kept ); },
                                        std::move( chips ) );
      return adapter;
   }
   std::string errorOf( const Transfer &transfer ) {
      const Outcome outcome = bus->transfer( transfer );
      EXPECT_EQ( outcome.data, "" );
      return outcome.error;
   }
   static Transfer read( uint32_t offset, unsigned length ) {
      return { .kind = Kind::Read, .address = 0x48, .offset = offset, .length = length };
   }
   static Transfer write( uint32_t offset, const std::string &data ) {
      return { .kind = Kind::Write,
               .address = 0x48,
               .offset = offset,
               .length = static_cast<unsigned>( data.size() ),
               .data = data };
   }
   static Transfer with( Kind kind, Transfer transfer ) {
      transfer.kind = kind;
      return transfer;
   }
   static Transfer pec( Transfer transfer ) {
      transfer.pec = true;
      return transfer;
   }
   std::unique_ptr<LinuxBus> bus;
};

TEST_F( LinuxBusTest, UsesTheSmbusProtocolsOfTheirLength ) {
   ScriptedAdapter &adapter = adapterWith( everything );
   adapter.expect( "slave 0x48" );
   adapter.expect( "smbus read BYTE 0x00", "\x11" );
   EXPECT_EQ( bus->transfer( read( 0, 0 ) ).data, "\x11" );
   adapter.expect( "slave 0x48" );
   adapter.expect( "smbus read BYTE_DATA 0x01", "\x22" );
   EXPECT_EQ( bus->transfer( read( 1, 1 ) ).data, "\x22" );
   adapter.expect( "slave 0x48" );
   adapter.expect( "smbus read WORD_DATA 0x02", "\x19\x80" );
   EXPECT_EQ( bus->transfer( read( 2, 2 ) ).data, "\x19\x80" );
   adapter.expect( "slave 0x48" );
   adapter.expect( "smbus read I2C_BLOCK 0x03", "abc" );
   EXPECT_EQ( bus->transfer( read( 3, 3 ) ).data, "abc" );
}

TEST_F( LinuxBusTest, WritesLikewise ) {
   ScriptedAdapter &adapter = adapterWith( everything );
   const auto expect = [&]( const std::string &call ) {
      adapter.expect( "slave 0x48" );
      adapter.expect( call );
   };
   expect( "smbus write BYTE 0x80" );
   EXPECT_TRUE( bus->transfer( write( 0x80, "" ) ).ok() );
   expect( "smbus write BYTE_DATA 0x01: 0xfe" );
   EXPECT_TRUE( bus->transfer( write( 1, "\xFE" ) ).ok() );
   expect( "smbus write WORD_DATA 0x02: 0x8019" ); // the low byte goes first
   EXPECT_TRUE( bus->transfer( write( 2, "\x19\x80" ) ).ok() );
   expect( "smbus write I2C_BLOCK 0x03: 03 61 62 63" );
   EXPECT_TRUE( bus->transfer( write( 3, "abc" ) ).ok() );
   expect( "smbus write BLOCK_DATA 0x04: 02 61 62" );
   EXPECT_TRUE( bus->transfer( with( Kind::BlockWrite, write( 4, "ab" ) ) ).ok() );
}

TEST_F( LinuxBusTest, ReadsBlocksAndCallsProcesses ) {
   ScriptedAdapter &adapter = adapterWith( everything );
   adapter.expect( "slave 0x48" );
   adapter.expect( "smbus read BLOCK_DATA 0x9a", "KP-850AC" );
   EXPECT_EQ( bus->transfer( with( Kind::BlockRead, read( 0x9A, 0 ) ) ).data, "KP-850AC" );
   adapter.expect( "slave 0x48" );
   adapter.expect( "smbus write PROC_CALL 0x05: 0x3412", "\x56\x78" );
   EXPECT_EQ( bus->transfer( with( Kind::ProcessCall, write( 5, "\x12\x34" ) ) ).data, "\x56\x78" );
}

TEST_F( LinuxBusTest, GoesByMessagesWhereBlocksDontReach ) {
   ScriptedAdapter &adapter = adapterWith( everything );
   adapter.expect( "slave 0x48" );
   adapter.expect( "write 0x48: 10 | read 0x48: 33 bytes", std::string( 33, 'x' ) );
   EXPECT_EQ( bus->transfer( read( 0x10, 33 ) ).data, std::string( 33, 'x' ) );
   std::string sent = "write 0x48: 10", block = "write 0x48: 10 21";
   for ( int i = 0; i < 33; ++i )
      sent += " 79", block += " 79";
   adapter.expect( "slave 0x48" );
   adapter.expect( sent );
   EXPECT_TRUE( bus->transfer( write( 0x10, std::string( 33, 'y' ) ) ).ok() );
   adapter.expect( "slave 0x48" );
   adapter.expect( block );
   EXPECT_TRUE(
      bus->transfer( with( Kind::BlockWrite, write( 0x10, std::string( 33, 'y' ) ) ) ).ok() );
}

TEST_F( LinuxBusTest, GoesByMessagesWhereTheAdapterKnowsNothingElse ) {
   ScriptedAdapter &adapter = adapterWith( plainI2c );
   const auto expect = [&]( const std::string &call, const std::string &bytes ) {
      adapter.expect( "slave 0x48" );
      adapter.expect( call, bytes );
   };
   expect( "read 0x48: 1 bytes", "\x11" );
   EXPECT_EQ( bus->transfer( read( 0, 0 ) ).data, "\x11" );
   expect( "write 0x48: 80", "" );
   EXPECT_TRUE( bus->transfer( write( 0x80, "" ) ).ok() );
   expect( "write 0x48: 00 | read 0x48: 2 bytes", "\x19\x80" );
   EXPECT_EQ( bus->transfer( read( 0, 2 ) ).data, "\x19\x80" );
   expect( "write 0x48: 05 12 34 | read 0x48: 2 bytes", "\x56\x78" );
   EXPECT_EQ( bus->transfer( with( Kind::ProcessCall, write( 5, "\x12\x34" ) ) ).data, "\x56\x78" );
}

TEST_F( LinuxBusTest, SendsTwoBytesOfOffsetHighByteFirst ) {
   ScriptedAdapter &adapter = adapterWith( everything, { { 0x48, { .offsetBytes = 2 } } } );
   adapter.expect( "slave 0x48" );
   adapter.expect( "write 0x48: 02 10 | read 0x48: 1 bytes", "\x08" );
   EXPECT_EQ( bus->transfer( read( 0x210, 1 ) ).data, "\x08" );
   adapter.expect( "slave 0x48" );
   adapter.expect( "write 0x48: 00 10 ff" );
   EXPECT_TRUE( bus->transfer( write( 0x10, "\xFF" ) ).ok() );
   adapter.expect( "slave 0x48" );
   adapter.expect( "smbus read BYTE 0x00", "\x11" ); // no register goes out
   EXPECT_EQ( bus->transfer( read( 0, 0 ) ).data, "\x11" );
}

TEST_F( LinuxBusTest, TakesTheClientsWordForOffsetsUnlessTheRoutesKnowBetter ) {
   ScriptedAdapter &adapter = adapterWith( everything, { { 0x49, { .offsetBytes = 1 } } } );
   Transfer wide = read( 0x210, 1 );
   wide.offsetBytes = 2;
   adapter.expect( "slave 0x48" );
   adapter.expect( "write 0x48: 02 10 | read 0x48: 1 bytes", "\x08" );
   EXPECT_EQ( bus->transfer( wide ).data, "\x08" );
   wide.address = 0x49;
   EXPECT_EQ(
      errorOf( wide ),
      "register 0x210 does not fit into 1 byte for address 0x49; set \"offsetBytes\" in the "
      "routes file" );
   EXPECT_TRUE( bus->transfer( read( 0x1FF, 1 ) ).final );
}

TEST_F( LinuxBusTest, LeavesThePecOfSmbusProtocolsToTheKernel ) {
   ScriptedAdapter &adapter = adapterWith( everything );
   adapter.expect( "slave 0x48" );
   adapter.expect( "pec on" );
   adapter.expect( "smbus write WORD_DATA 0x3b: 0x0064" );
   EXPECT_TRUE( bus->transfer( pec( write( 0x3B, "\x64\0"s ) ) ).ok() );
   adapter.expect( "slave 0x48" );
   adapter.expect( "smbus read BYTE_DATA 0x20", "\x17" ); // it is on already
   EXPECT_EQ( bus->transfer( pec( read( 0x20, 1 ) ) ).data, "\x17" );
   adapter.expect( "slave 0x48" );
   adapter.expect( "pec off" );
   adapter.expect( "smbus read BYTE_DATA 0x20", "\x17" );
   EXPECT_EQ( bus->transfer( read( 0x20, 1 ) ).data, "\x17" );
}

// The codes are a table-driven CRC-8's, over 90 3b 64 00, 90 00 91 19 80 and 90 00 91 19 81.
TEST_F( LinuxBusTest, AddsAndChecksThePecOfMessagesItself ) {
   ScriptedAdapter &adapter = adapterWith( plainI2c );
   adapter.expect( "slave 0x48" );
   adapter.expect( "write 0x48: 3b 64 00 fa" );
   EXPECT_TRUE( bus->transfer( pec( write( 0x3B, "\x64\0"s ) ) ).ok() );
   adapter.expect( "slave 0x48" );
   adapter.expect( "write 0x48: 00 | read 0x48: 3 bytes", "\x19\x80\x04" );
   EXPECT_EQ( bus->transfer( pec( read( 0, 2 ) ) ).data, "\x19\x80" );
   adapter.expect( "slave 0x48" );
   adapter.expect( "write 0x48: 00 | read 0x48: 3 bytes", "\x19\x81\x04" );
   const Outcome outcome = bus->transfer( pec( read( 0, 2 ) ) );
   EXPECT_EQ( outcome.error, "PEC is 0x04, expected 0x03" );
   EXPECT_FALSE( outcome.final );
}

TEST_F( LinuxBusTest, RefusesByNameWhatTheAdapterCantDo ) {
   adapterWith( smbusOnly & ~I2C_FUNC_SMBUS_READ_WORD_DATA );
   EXPECT_EQ( errorOf( read( 0, 2 ) ),
              "the adapter lacks I2C_FUNC_SMBUS_READ_WORD_DATA and also I2C_FUNC_I2C" );
   EXPECT_EQ( errorOf( read( 0, 33 ) ), "the adapter lacks I2C_FUNC_I2C" );
   EXPECT_EQ( errorOf( with( Kind::BlockRead, read( 0, 0 ) ) ),
              "the adapter lacks I2C_FUNC_SMBUS_READ_BLOCK_DATA" );
   EXPECT_EQ( errorOf( pec( read( 0, 1 ) ) ),
              "the adapter lacks I2C_FUNC_SMBUS_PEC and also I2C_FUNC_I2C" );
   EXPECT_TRUE( bus->transfer( pec( read( 0, 1 ) ) ).final );
}

TEST_F( LinuxBusTest, RefusesBlockReadsWithTwoBytesOfOffset ) {
   adapterWith( everything, { { 0x48, { .offsetBytes = 2 } } } );
   EXPECT_EQ( errorOf( with( Kind::BlockRead, read( 0, 0 ) ) ),
              "the kernel has no block read for registers of two bytes" );
}

TEST_F( LinuxBusTest, TouchesNoAddressThatAKernelDriverHolds ) {
   ScriptedAdapter &adapter = adapterWith( everything );
   adapter.driverIs( "lm75" );
   adapter.expect( "slave 0x48", EBUSY );
   const Outcome held = bus->transfer( read( 0, 2 ) );
   EXPECT_EQ( held.error, "the address is held by the kernel driver lm75" );
   EXPECT_TRUE( held.final );
   adapter.driverIs( "" );
   adapter.expect( "slave 0x48", EBUSY );
   EXPECT_EQ( errorOf( read( 0, 33 ) ), "the address is held by a kernel driver" );
   adapter.expect( "slave 0x48" ); // it has let go
   adapter.expect( "smbus read BYTE_DATA 0x00", "\x18" );
   EXPECT_EQ( bus->transfer( read( 0, 1 ) ).data, "\x18" );
}

TEST_F( LinuxBusTest, SharesAnAddressWhereTheRoutesAllowIt ) {
   ScriptedAdapter &adapter = adapterWith( everything, { { 0x48, { .force = true } } } );
   adapter.expect( "slave force 0x48" );
   adapter.expect( "smbus read BYTE_DATA 0x00", "\x18" );
   EXPECT_EQ( bus->transfer( read( 0, 1 ) ).data, "\x18" );
   Transfer other = read( 0, 1 );
   other.address = 0x49;
   adapter.expect( "slave 0x49" );
   adapter.expect( "smbus read BYTE_DATA 0x00", "\x19" );
   EXPECT_EQ( bus->transfer( other ).data, "\x19" );
}

TEST_F( LinuxBusTest, TellsWhatHappenedOnTheWires ) {
   const struct {
      int error;
      const char *words;
   } rows[] = {
      { ENXIO, "no acknowledge of the address" },
      { ENODEV, "no acknowledge of the address" },
      { EREMOTEIO, "no acknowledge" },
      { EAGAIN, "arbitration lost" },
      { ETIMEDOUT, "the adapter's timeout is over" },
      { EBADMSG, "wrong PEC" },
      { EPROTO, "the chip's answer violates the SMBus protocol" },
      { EBUSY, "the bus stays busy" },
      { EIO, "Input/output error" },
   };
   ScriptedAdapter &adapter = adapterWith( everything );
   for ( const auto &[error, words] : rows ) {
      adapter.expect( "slave 0x48" );
      adapter.expect( "smbus read BYTE_DATA 0x00", error );
      const Outcome outcome = bus->transfer( read( 0, 1 ) );
      EXPECT_EQ( outcome.error, words );
      EXPECT_FALSE( outcome.final ) << words; // another try may do
   }
   adapter.expect( "slave 0x48" );
   adapter.expect( "smbus read BYTE_DATA 0x00", EOPNOTSUPP );
   EXPECT_TRUE( bus->transfer( read( 0, 1 ) ).final );
}

TEST_F( LinuxBusTest, SetsTheTimeLimitWhenItChangesAndRestsBehindATransfer ) {
   ScriptedAdapter &adapter = adapterWith( everything );
   Transfer patient = read( 0, 1 );
   patient.timeout = 30ms;
   patient.pause = 11ms;
   adapter.expect( "slave 0x48" );
   adapter.expect( "timeout 30 ms" );
   adapter.expect( "smbus read BYTE_DATA 0x00", "a" );
   adapter.expect( "pause 11 ms" );
   bus->transfer( patient );
   adapter.expect( "slave 0x48" );
   adapter.expect( "smbus read BYTE_DATA 0x00", "b" );
   adapter.expect( "pause 11 ms" );
   bus->transfer( patient );
   adapter.expect( "slave 0x48" );
   adapter.expect( "timeout 1000 ms" ); // what it was before nobody can ask
   adapter.expect( "smbus read BYTE_DATA 0x00", "c" );
   bus->transfer( read( 0, 1 ) );
}

TEST_F( LinuxBusTest, RefusesMessagesLongerThanTheKernelTakes ) {
   adapterWith( plainI2c ).expect( "slave 0x48" );
   EXPECT_EQ( errorOf( write( 0, std::string( 8192, 'x' ) ) ),
              "more than 8192 bytes in one message; the kernel refuses them" );
}

TEST_F( LinuxBusTest, AsksAgainForAnAdapterThatWasNotThere ) {
   int asked = 0;
   ScriptedAdapter *adapter = nullptr;
   LinuxBus late(
      [&]() -> std::unique_ptr<Adapter> {
         if ( ++asked == 1 )
            throw AdapterError( "there is no adapter named \"tiny\"" );
         auto made = std::make_unique<ScriptedAdapter>( everything );
         adapter = made.get();
         adapter->expect( "slave 0x48" );
         adapter->expect( "smbus read BYTE_DATA 0x00", "a" );
         return made;
      },
      {} );
   const Outcome first = late.transfer( read( 0, 1 ) );
   EXPECT_EQ( first.error, "there is no adapter named \"tiny\"" );
   EXPECT_TRUE( first.final );
   EXPECT_EQ( late.transfer( read( 0, 1 ) ).data, "a" );
   EXPECT_EQ( asked, 2 );
}

} // namespace

} // namespace SmbusdTest
