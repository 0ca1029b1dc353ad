#include "OrbisGeneric/Components/NotImplementedException.h"
#include "OrbisGeneric/Drivers/SmbusProxyDriver.h"
#include "support/MessageOf.h"
#include "support/PluginFixture.h"
#include "support/ScriptedHam.h"

namespace {

class SmbusProxyTest : public PluginFixture {
 protected:
   SmbusProxyTest() { driver.ham_ = &ham; }

   ScriptedHam ham;
   Drivers::SmbusProxyDriver driver;
   Drivers::SmbusProxyDriver::SmbusProxy proxy{ &driver };
   pl_smbus *record = &proxy.record_;
   const pl_smbus_ops &ops = *record->ops;
   uint8_t byte = 0x5A;
   uint16_t word = 0x5A5A;
   uint8_t buffer[8] = { 9, 9, 9, 9, 9, 9, 9, 9 };
   unsigned length = 77;
};

// Each is a batch of one transfer, without packet error checking.
TEST_F( SmbusProxyTest, ReadsBytesAndWords ) {
   ham.expectBatch( { recvByte().answers( { 0x11 } ) } );
   EXPECT_EQ( ops.receive_byte( record, &byte ), PL_STATUS_OK );
   EXPECT_EQ( byte, 0x11 );
   ham.expectBatch( { read8( 0x20 ).answers( { 0x22 } ) } );
   EXPECT_EQ( ops.read_byte( record, 0x20, &byte ), PL_STATUS_OK );
   EXPECT_EQ( byte, 0x22 );
   ham.expectBatch( { read16( 0x21 ).answers( { 0x34, 0x12 } ) } );
   EXPECT_EQ( ops.read_word( record, 0x21, &word ), PL_STATUS_OK );
   EXPECT_EQ( word, 0x1234 );
   ham.expectBatch( { processCall( 0x22 ).carries( { 0x02, 0x01 } ).answers( { 0x04, 0x03 } ) } );
   EXPECT_EQ( ops.process_call( record, 0x22, 0x0102, &word ), PL_STATUS_OK );
   EXPECT_EQ( word, 0x0304 );
}

TEST_F( SmbusProxyTest, Writes ) {
   const uint8_t data[] = { 1, 2, 3 };
   ham.expectBatch( { sendByte( 0x30 ) } );
   EXPECT_EQ( ops.send_byte( record, 0x30 ), PL_STATUS_OK );
   ham.expectBatch( { write8( 0x31, 0x32 ) } );
   EXPECT_EQ( ops.write_byte( record, 0x31, 0x32 ), PL_STATUS_OK );
   ham.expectBatch( { write16( 0x33 ).carries( { 0x35, 0x34 } ) } );
   EXPECT_EQ( ops.write_word( record, 0x33, 0x3435 ), PL_STATUS_OK );
   ham.expectBatch( { writeBlock( 0x36 ).carries( { 1, 2, 3 } ) } );
   EXPECT_EQ( ops.block_write( record, 0x36, data, 3 ), PL_STATUS_OK );
   ham.expectBatch( { write( 0x37 ).carries( { 1, 2 } ) } );
   EXPECT_EQ( ops.i2c_block_write( record, 0x37, data, 2 ), PL_STATUS_OK );
}

TEST_F( SmbusProxyTest, ABlockReadCopiesAllBytesOfTheDevice ) {
   ham.expectBatch( { readBlock( 0x40 ).answers( { 1, 2, 3, 4, 5 } ) } );
   EXPECT_EQ( ops.block_read( record, 0x40, buffer, &length ), PL_STATUS_OK );
   EXPECT_EQ( length, 5u );
   EXPECT_EQ( buffer[4], 5 );
   EXPECT_EQ( buffer[5], 9 );
}

TEST_F( SmbusProxyTest, AFailedBlockReadReturnsALengthOfZero ) {
   ham.expectBatch( { readBlock( 0x40 ).fails( 6 ) } );
   EXPECT_EQ( ops.block_read( record, 0x40, buffer, &length ), 6 );
   EXPECT_EQ( length, 0u );
   EXPECT_EQ( buffer[0], 9 );
}

TEST_F( SmbusProxyTest, AnI2CBlockReadOfTheRequestedLengthIsCopied ) {
   ham.expectBatch( { read( 0x50, 4 ).answers( { 1, 2, 3, 4 } ) } );
   EXPECT_EQ( ops.i2c_block_read( record, 0x50, buffer, 4 ), PL_STATUS_OK );
   EXPECT_EQ( buffer[3], 4 );
   EXPECT_EQ( buffer[4], 9 );
}

TEST_F( SmbusProxyTest, AnI2CBlockReadOfAnotherLengthReturns4AndCopiesNothing ) {
   ham.expectBatch( { read( 0x50, 4 ).answers( { 1, 2, 3 } ) } );
   EXPECT_EQ( ops.i2c_block_read( record, 0x50, buffer, 4 ), 4 );
   EXPECT_EQ( buffer[0], 9 );
   ham.expectBatch( { read( 0x50, 4 ).fails( 6 ) } );
   EXPECT_EQ( ops.i2c_block_read( record, 0x50, buffer, 4 ), 4 );
}

TEST_F( SmbusProxyTest, ABusFailureIsReturnedAndKeepsTheOutput ) {
   ham.expectBatch( { recvByte().fails( 6 ) } );
   EXPECT_EQ( ops.receive_byte( record, &byte ), 6 );
   ham.expectBatch( { read8( 1 ).fails( 4 ) } );
   EXPECT_EQ( ops.read_byte( record, 1, &byte ), 4 );
   ham.expectBatch( { read16( 1 ).fails( 6 ) } );
   EXPECT_EQ( ops.read_word( record, 1, &word ), 6 );
   ham.expectBatch( { processCall( 1 ).carries( { 0, 0 } ).fails( 6 ) } );
   EXPECT_EQ( ops.process_call( record, 1, 0, &word ), 6 );
   ham.expectBatch( { sendByte( 1 ).fails( 6 ) } );
   EXPECT_EQ( ops.send_byte( record, 1 ), 6 );
   EXPECT_EQ( byte, 0x5A );
   EXPECT_EQ( word, 0x5A5A );
}

TEST_F( SmbusProxyTest, QuickCommandAndBlockProcessCallAreNotSupported ) {
   EXPECT_THROW( ops.quick_command( record, 1 ), NotImplementedException );
   EXPECT_THROW( ops.block_process_call( record, 1, buffer, 1, buffer, &byte ),
                 NotImplementedException );
}

TEST_F( SmbusProxyTest, EveryCallbackTracesItsName ) {
   Component::LogicalDevice::SmbusProxy bare;
   pl_smbus *bareRecord = &bare.record_;
   const auto expectNamed = [&]( const std::string &operation, auto call ) {
      EXPECT_EQ( messageOf( call ), "Not implemented " + operation );
      EXPECT_EQ( TestHost::traces.back(), ( TestHost::Trace{ 4, operation + "Callback" } ) );
   };
   expectNamed( "quickCommand", [&] { ops.quick_command( bareRecord, 1 ); } );
   expectNamed( "receiveByte", [&] { ops.receive_byte( bareRecord, &byte ); } );
   expectNamed( "sendByte", [&] { ops.send_byte( bareRecord, 1 ); } );
   expectNamed( "readByte", [&] { ops.read_byte( bareRecord, 1, &byte ); } );
   expectNamed( "writeByte", [&] { ops.write_byte( bareRecord, 1, 1 ); } );
   expectNamed( "readWord", [&] { ops.read_word( bareRecord, 1, &word ); } );
   expectNamed( "writeWord", [&] { ops.write_word( bareRecord, 1, 1 ); } );
   expectNamed( "blockRead", [&] { ops.block_read( bareRecord, 1, buffer, &length ); } );
   expectNamed( "blockWrite", [&] { ops.block_write( bareRecord, 1, buffer, 1 ); } );
   expectNamed( "i2cBlockRead", [&] { ops.i2c_block_read( bareRecord, 1, buffer, 1 ); } );
   expectNamed( "i2cBlockWrite", [&] { ops.i2c_block_write( bareRecord, 1, buffer, 1 ); } );
   expectNamed( "processCall", [&] { ops.process_call( bareRecord, 1, 1, &word ); } );
   expectNamed( "blockProcessCall",
                [&] { ops.block_process_call( bareRecord, 1, buffer, 1, buffer, &byte ); } );
}

// A driver with the operations that the proxy driver does not support.
struct WholeProxy : Component::LogicalDevice::SmbusProxy {
   pl_status quickCommand( int bit ) override { return bit ? PL_STATUS_UNSUPPORTED : PL_STATUS_OK; }
   pl_status blockProcessCall( uint8_t command, const uint8_t *buf, uint8_t n, uint8_t *out,
                               uint8_t *outLen ) override {
      std::copy_n( buf, n, out );
      out[n] = command;
      *outLen = static_cast<uint8_t>( n + 1 );
      return PL_STATUS_OK;
   }
};

TEST_F( SmbusProxyTest, ADriverCanSupportQuickCommandAndBlockProcessCall ) {
   WholeProxy whole;
   EXPECT_EQ( ops.quick_command( &whole.record_, 1 ), PL_STATUS_UNSUPPORTED );
   EXPECT_EQ( ops.quick_command( &whole.record_, 0 ), PL_STATUS_OK );
   const uint8_t sent[] = { 1, 2 };
   EXPECT_EQ( ops.block_process_call( &whole.record_, 0x77, sent, 2, buffer, &byte ),
              PL_STATUS_OK );
   EXPECT_EQ( byte, 3 );
   EXPECT_EQ( buffer[1], 2 );
   EXPECT_EQ( buffer[2], 0x77 );
}

// The exception of an unsupported operation contains the name of the operation.
TEST( BareProxyTest, SupportsNoOperation ) {
   Component::LogicalDevice::SmbusProxy proxy;
   uint8_t byte;
   uint16_t word;
   unsigned length;
   EXPECT_EQ( messageOf( [&] { proxy.quickCommand( 1 ); } ), "Not implemented quickCommand" );
   EXPECT_EQ( messageOf( [&] { proxy.receiveByte( &byte ); } ), "Not implemented receiveByte" );
   EXPECT_EQ( messageOf( [&] { proxy.sendByte( 1 ); } ), "Not implemented sendByte" );
   EXPECT_EQ( messageOf( [&] { proxy.readByte( 1, &byte ); } ), "Not implemented readByte" );
   EXPECT_EQ( messageOf( [&] { proxy.writeByte( 1, 1 ); } ), "Not implemented writeByte" );
   EXPECT_EQ( messageOf( [&] { proxy.readWord( 1, &word ); } ), "Not implemented readWord" );
   EXPECT_EQ( messageOf( [&] { proxy.writeWord( 1, 1 ); } ), "Not implemented writeWord" );
   EXPECT_EQ( messageOf( [&] { proxy.blockRead( 1, &byte, &length ); } ),
              "Not implemented blockRead" );
   EXPECT_EQ( messageOf( [&] { proxy.blockWrite( 1, &byte, 1 ); } ), "Not implemented blockWrite" );
   EXPECT_EQ( messageOf( [&] { proxy.i2cBlockRead( 1, &byte, 1 ); } ),
              "Not implemented i2cBlockRead" );
   EXPECT_EQ( messageOf( [&] { proxy.i2cBlockWrite( 1, &byte, 1 ); } ),
              "Not implemented i2cBlockWrite" );
   EXPECT_EQ( messageOf( [&] { proxy.processCall( 1, 1, &word ); } ),
              "Not implemented processCall" );
   EXPECT_EQ( messageOf( [&] { proxy.blockProcessCall( 1, &byte, 1, &byte, &byte ); } ),
              "Not implemented blockProcessCall" );
}

} // namespace
