// What a Linux bus refuses, which errors it reports, and the owner and timeout of an address.
#include "LinuxBusFixture.h"

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

class LinuxBusErrorTest : public LinuxBusFixture {};

TEST_F( LinuxBusErrorTest, NamesTheFunctionThatTheAdapterLacks ) {
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

TEST_F( LinuxBusErrorTest, RefusesBlockReadsWithTwoBytesOfOffset ) {
   adapterWith( everything, { { 0x48, { .offsetBytes = 2 } } } );
   EXPECT_EQ( errorOf( with( Kind::BlockRead, read( 0, 0 ) ) ),
              "the kernel has no block read for registers of two bytes" );
}

TEST_F( LinuxBusErrorTest, RefusesAnAddressThatAKernelDriverHolds ) {
   ScriptedAdapter &adapter = adapterWith( everything );
   adapter.driverIs( "lm75" );
   adapter.expect( "slave 0x48", EBUSY );
   const Outcome held = bus->transfer( read( 0, 2 ) );
   EXPECT_EQ( held.error, "the address is held by the kernel driver lm75" );
   EXPECT_TRUE( held.final );
   adapter.driverIs( "" );
   adapter.expect( "slave 0x48", EBUSY );
   EXPECT_EQ( errorOf( read( 0, 33 ) ), "the address is held by a kernel driver" );
   adapter.expect( "slave 0x48" ); // the driver has released it
   adapter.expect( "smbus read BYTE_DATA 0x00", "\x18" );
   EXPECT_EQ( bus->transfer( read( 0, 1 ) ).data, "\x18" );
}

TEST_F( LinuxBusErrorTest, SharesAnAddressWhenTheRouteForcesIt ) {
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

TEST_F( LinuxBusErrorTest, ExplainsErrorsOnTheBus ) {
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
      EXPECT_FALSE( outcome.final ) << words; // a retry may succeed
   }
   adapter.expect( "slave 0x48" );
   adapter.expect( "smbus read BYTE_DATA 0x00", EOPNOTSUPP );
   EXPECT_TRUE( bus->transfer( read( 0, 1 ) ).final );
}

TEST_F( LinuxBusErrorTest, SetsTheTimeoutWhenItChangesAndPausesAfterATransfer ) {
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
   adapter.expect( "timeout 1000 ms" ); // the kernel's default; the old value can't be read
   adapter.expect( "smbus read BYTE_DATA 0x00", "c" );
   bus->transfer( read( 0, 1 ) );
}

TEST_F( LinuxBusErrorTest, RefusesMessagesThatAreTooLongForTheKernel ) {
   adapterWith( plainI2c ).expect( "slave 0x48" );
   EXPECT_EQ( errorOf( write( 0, std::string( 8192, 'x' ) ) ),
              "more than 8192 bytes in one message; the kernel refuses them" );
}

TEST_F( LinuxBusErrorTest, RetriesToOpenAMissingAdapter ) {
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
