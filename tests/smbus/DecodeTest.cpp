#include "smbus/Decode.h"
#include "Requests.h"

#include <gtest/gtest.h>

#include <functional>

namespace BusTest {

namespace {

using namespace TestSupport;
using TestSupport::read; // not the system's
using namespace Bus;
using namespace std::chrono_literals;
using Smbus::Request;

std::string refusal( const Smbus::TransactionRequest &message ) {
   try {
      decode( message, 2s );
      return "accepted";
   } catch ( const Refused &reason ) {
      return reason.what();
   }
}

TEST( DecodeTest, ReadsAWholeRequest ) {
   Smbus::TransactionRequest message =
      transaction( request( Smbus::REQUEST_WRITE, 0x48, 0xDEADBEEF, 2, "\x19\x80" ) );
   message.mutable_request( 0 )->set_pec( true );
   message.set_retries( 3 );
   const Transaction decoded = decode( message, 2s );
   EXPECT_EQ( toString( decoded.bus ), "scd(4):1:2" );
   EXPECT_EQ( decoded.retries, 3u );
   ASSERT_EQ( decoded.transfers.size(), 1u );
   const Transfer &transfer = decoded.transfers[0];
   EXPECT_EQ( transfer.kind, Transfer::Kind::Write );
   EXPECT_EQ( transfer.address, 0x48 );
   EXPECT_EQ( transfer.offset, 0xDEADBEEF );
   EXPECT_EQ( transfer.offsetBytes, 1u );
   EXPECT_EQ( transfer.data, "\x19\x80" );
   EXPECT_TRUE( transfer.pec );
}

TEST( DecodeTest, DecodesEveryFieldOfTheAddressWord ) {
   Request each = read( 0, 0, 1 );
   each.set_addr( 0xFFFFFFFFull | 0x7Full << 32 );
   EXPECT_EQ( decode( transaction( each ), 2s ).transfers[0].address, 0x7F );
   EXPECT_EQ( toString( decode( transaction( each ), 2s ).bus ), "scd(4):0:0" );
   each.set_addr( 0x7Full << 39 );
   EXPECT_EQ( toString( decode( transaction( each ), 2s ).bus ), "scd(4):0:127" );
   each.set_addr( 0x7Full << 46 );
   EXPECT_EQ( toString( decode( transaction( each ), 2s ).bus ), "scd(4):127:0" );
   each.set_addr( 2ull << 57 );
   EXPECT_EQ( decode( transaction( each ), 2s ).transfers[0].offsetBytes, 2u );
   each.set_addr( 0 );
   EXPECT_EQ( decode( transaction( each ), 2s ).transfers[0].offsetBytes, 1u );
   each.set_addr( 1ull << 53 | 7ull << 54 | 1ull << 59 | 3ull << 60 | 3ull << 62 ); // delays
   EXPECT_EQ( toString( decode( transaction( each ), 2s ).bus ), "scd(4):0:0" );
}

TEST( DecodeTest, TurnsDelaysAndTimeoutIntoMilliseconds ) {
   const auto timing = []( Smbus::RequestType type, uint64_t bits ) {
      Request each = request( type, 0x48, 0, 1, type == Smbus::REQUEST_WRITE ? "x" : "" );
      each.set_addr( each.addr() | bits );
      const Transfer transfer = decode( transaction( each ), 2s ).transfers[0];
      return std::pair( transfer.timeout, transfer.pause );
   };
   const auto reads = Smbus::REQUEST_READ, writes = Smbus::REQUEST_WRITE;
   EXPECT_EQ( timing( reads, 0 ), std::pair( 0ms, 0ms ) );
   EXPECT_EQ( timing( reads, 1ull << 54 ), std::pair( 10ms, 0ms ) );
   EXPECT_EQ( timing( reads, 7ull << 54 ), std::pair( 70ms, 0ms ) );
   EXPECT_EQ( timing( reads, 1ull << 59 ), std::pair( 0ms, 1ms ) );
   EXPECT_EQ( timing( writes, 1ull << 60 ), std::pair( 0ms, 1ms ) );
   EXPECT_EQ( timing( writes, 2ull << 60 ), std::pair( 0ms, 5ms ) );
   EXPECT_EQ( timing( writes, 3ull << 60 | 1ull << 59 ), std::pair( 0ms, 11ms ) );
   EXPECT_EQ( timing( reads, 3ull << 60 ), std::pair( 0ms, 0ms ) ); // a write's
   EXPECT_EQ( timing( reads, 3ull << 62 ), std::pair( 0ms, 10ms ) );
   EXPECT_EQ( timing( writes, 3ull << 62 ), std::pair( 0ms, 0ms ) ); // a read's
}

TEST( DecodeTest, UsesTheClientsTimeLimitUpToTheBound ) {
   Smbus::TransactionRequest message;
   EXPECT_EQ( decode( message, 2s ).limit, 2s );
   message.set_timeout_ms( 50 );
   EXPECT_EQ( decode( message, 2s ).limit, 50ms );
   message.set_timeout_ms( 0 );
   EXPECT_EQ( decode( message, 2s ).limit, 2s );
   message.set_timeout_ms( 60'000 );
   EXPECT_EQ( decode( message, 2s ).limit, 2s );
}

TEST( DecodeTest, AcceptsTheLargestOfEverything ) {
   EXPECT_EQ( refusal( transaction( read( 0x7F, UINT32_MAX, 8192 ) ) ), "accepted" );
   EXPECT_EQ( refusal( transaction(
                 request( Smbus::REQUEST_WRITE, 1, 0, 8192, std::string( 8192, 'x' ) ) ) ),
              "accepted" );
   EXPECT_EQ( refusal( transaction(
                 request( Smbus::REQUEST_BLOCK_WRITE, 1, 0, 255, std::string( 255, 'x' ) ) ) ),
              "accepted" );
}

TEST( DecodeTest, NamesTheInvalidRequestAndTheReason ) {
   const std::pair<const char *, std::function<void( Request & )>> rows[] = {
      { "addr is missing", []( Request &each ) { each.clear_addr(); } },
      { "pci is missing", []( Request &each ) { each.clear_pci(); } },
      { "a known mastertype is missing", []( Request &each ) { each.clear_mastertype(); } },
      { "a known type is missing", []( Request &each ) { each.clear_type(); } },
      { "length is missing", []( Request &each ) { each.clear_length(); } },
      { "pec is missing", []( Request &each ) { each.clear_pec(); } },
      { "length 8193 for a read, expected 0 to 8192",
        []( Request &each ) { each.set_length( 8193 ); } },
      { "1 bytes of data, expected 0", []( Request &each ) { each.set_data( "x" ); } },
      { "0 bytes of data, expected 1",
        []( Request &each ) { each.set_type( Smbus::REQUEST_WRITE ); } },
      { "2 bytes of data, expected 1",
        []( Request &each ) {
           each.set_type( Smbus::REQUEST_WRITE );
           each.set_data( "xy" );
        } },
      { "1 bytes of data, expected 0",
        []( Request &each ) {
           each.set_type( Smbus::REQUEST_WRITE );
           each.set_length( 0 );
           each.set_data( "x" );
        } },
      { "length 1 for a process call, expected 2",
        []( Request &each ) { each.set_type( Smbus::REQUEST_PROCESS_CALL ); } },
      { "length 1 for a block read, expected 0",
        []( Request &each ) { each.set_type( Smbus::REQUEST_BLOCK_READ ); } },
      { "length 256 for a block write, expected 1 to 255",
        []( Request &each ) {
           each.set_type( Smbus::REQUEST_BLOCK_WRITE );
           each.set_length( 256 );
        } },
      { "length 0 for a block write, expected 1 to 255",
        []( Request &each ) {
           each.set_type( Smbus::REQUEST_BLOCK_WRITE );
           each.set_length( 0 );
        } },
      { "address size 3, expected 0, 1 or 2",
        []( Request &each ) { each.set_addr( each.addr() | 3ull << 57 ); } },
      { "on scd(5):1:2, but the transaction is on scd(4):1:2",
        []( Request &each ) { each.set_pci( 5 ); } },
      { "on i2c:2, but the transaction is on scd(4):1:2",
        []( Request &each ) { each.set_mastertype( Smbus::MASTER_I2C ); } },
   };
   for ( const auto &[reason, spoil] : rows ) {
      Smbus::TransactionRequest message =
         transaction( read( 0x48, 0, 1 ), read( 0x48, 0, 1 ), read( 0x48, 0, 1 ) );
      spoil( *message.mutable_request( 1 ) );
      EXPECT_EQ( refusal( message ), std::string( "request 2 of 3: " ) + reason );
   }
}

TEST( DecodeTest, TreatsAnUnknownTypeAsMissing ) {
   Smbus::TransactionRequest message = transaction( read( 0x48, 0, 1 ) );
   message.mutable_request( 0 )->clear_type();
   std::string bytes = message.SerializeAsString();
   bytes[1] = static_cast<char>( bytes[1] + 2 ); // the request is two bytes longer
   bytes += "\x20\x09";                          // field 4, type 9
   ASSERT_TRUE( message.ParseFromString( bytes ) );
   EXPECT_EQ( refusal( message ), "request 1 of 1: a known type is missing" );
}

TEST( DecodeTest, IgnoresPciAndAcceleratorOfAdapterRequests ) {
   Request first = read( 0x48, 0, 1 ), second = first;
   first.set_mastertype( Smbus::MASTER_I2C );
   second.set_mastertype( Smbus::MASTER_I2C );
   second.set_pci( 77 );
   second.set_addr( second.addr() ^ 0x7Full << 46 );
   EXPECT_EQ( toString( decode( transaction( first, second ), 2s ).bus ), "i2c:2" );
}

TEST( DecodeTest, RefusesMoreThan4096Requests ) {
   Smbus::TransactionRequest message;
   for ( int i = 0; i < 4096; ++i )
      *message.add_request() = read( 0x48, 0, 1 );
   Smbus::TransactionRequest parsed;
   parse( message.SerializeAsString(), parsed );
   EXPECT_EQ( parsed.request_size(), 4096 );
   message.add_request();
   EXPECT_THROW( parse( message.SerializeAsString(), parsed ), Refused );
}

TEST( DecodeTest, RefusesMillionsOfEmptyRequestsBeforeItAllocatesMemory ) {
   std::string bytes;
   for ( int i = 0; i < 8'000'000; ++i )
      bytes += std::string_view( "\x22\x00", 2 );
   Smbus::TransactionRequest parsed;
   EXPECT_THROW( parse( bytes, parsed ), Refused );
}

TEST( DecodeTest, CountsNoFieldOfAnotherTypeThatHasTheNumberOfRequests ) {
   std::string bytes;
   for ( int i = 0; i < 5000; ++i )
      bytes += std::string_view( "\x20\x00", 2 );
   EXPECT_EQ( countRequests( bytes ), 0u );
   Smbus::TransactionRequest parsed;
   parse( bytes, parsed );
   EXPECT_EQ( parsed.request_size(), 0 );
}

TEST( DecodeTest, RefusesToReadMoreThanAnAnswerCanHold ) {
   Smbus::TransactionRequest message;
   for ( int i = 0; i < 1025; ++i )
      *message.add_request() = read( 0x48, 0, 8192 );
   EXPECT_EQ( refusal( message ),
              "8396800 bytes to read, but a transaction may read at most 8388608" );
}

} // namespace

} // namespace BusTest
