// Which calls of the kernel a transfer becomes.
#include "LinuxBusFixture.h"

namespace SmbusdTest {

namespace {

using namespace BoardFiles;
using namespace Bus;
using namespace Smbusd;
using namespace Smbusd::Linux;
using namespace std::chrono_literals;
using namespace std::string_literals;
using Kind = Transfer::Kind;

class LinuxBusTest : public LinuxBusFixture {};

TEST_F( LinuxBusTest, ReadsByTheSmbusProtocolForTheLength ) {
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

TEST_F( LinuxBusTest, WritesByTheSmbusProtocolForTheLength ) {
   ScriptedAdapter &adapter = adapterWith( everything );
   const auto expect = [&]( const std::string &call ) {
      adapter.expect( "slave 0x48" );
      adapter.expect( call );
   };
   expect( "smbus write BYTE 0x80" );
   EXPECT_TRUE( bus->transfer( write( 0x80, "" ) ).ok() );
   expect( "smbus write BYTE_DATA 0x01: 0xfe" );
   EXPECT_TRUE( bus->transfer( write( 1, "\xFE" ) ).ok() );
   expect( "smbus write WORD_DATA 0x02: 0x8019" ); // low byte first
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

TEST_F( LinuxBusTest, UsesMessagesForLongTransfers ) {
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

TEST_F( LinuxBusTest, UsesMessagesWhenTheAdapterHasNoSmbusProtocols ) {
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
   adapter.expect( "smbus read BYTE 0x00", "\x11" ); // sends no register
   EXPECT_EQ( bus->transfer( read( 0, 0 ) ).data, "\x11" );
}

TEST_F( LinuxBusTest, UsesTheClientsOffsetWidthUnlessTheRouteHasOne ) {
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
   adapter.expect( "smbus read BYTE_DATA 0x20", "\x17" ); // PEC is on already
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

} // namespace

} // namespace SmbusdTest
