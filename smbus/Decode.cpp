#include "smbus/Decode.h"

#include <fmt/format.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/wire_format_lite.h>

#include <algorithm>

namespace Bus {

namespace {

// The reason, without the number of the request.
struct InvalidRequest : std::runtime_error {
   using std::runtime_error::runtime_error;
};

// A request's `addr`, from the least significant bit.
struct AddressWord {
   explicit AddressWord( uint64_t word ) : word_( word ) {}
   uint32_t offset() const { return field( 0, 32 ); }
   uint32_t address() const { return field( 32, 7 ); }
   uint32_t bus() const { return field( 39, 7 ); }
   uint32_t accelerator() const { return field( 46, 7 ); }
   uint32_t busTimeout() const { return field( 54, 3 ); }
   uint32_t offsetBytes() const { return field( 57, 2 ); }
   bool extraDelay() const { return field( 59, 1 ) != 0; }
   uint32_t writeDelay() const { return field( 60, 2 ); }
   uint32_t readDelay() const { return field( 62, 2 ); }

 private:
   uint32_t field( unsigned from, unsigned width ) const {
      return static_cast<uint32_t>( word_ >> from & ( ( uint64_t{ 1 } << width ) - 1 ) );
   }
   uint64_t word_;
};

void require( bool present, const char *field ) {
   if ( !present )
      throw InvalidRequest( fmt::format( "{} is missing", field ) );
}

// The parser leaves out enumerators that this server does not know.
void requireFields( const Smbus::Request &request ) {
   require( request.has_addr(), "addr" );
   require( request.has_pci(), "pci" );
   require( request.has_mastertype(), "a known mastertype" );
   require( request.has_type(), "a known type" );
   require( request.has_length(), "length" );
   require( request.has_pec(), "pec" );
}

Transfer::Kind kindOf( Smbus::RequestType type ) {
   switch ( type ) {
   case Smbus::REQUEST_READ:
      return Transfer::Kind::Read;
   case Smbus::REQUEST_WRITE:
      return Transfer::Kind::Write;
   case Smbus::REQUEST_PROCESS_CALL:
      return Transfer::Kind::ProcessCall;
   case Smbus::REQUEST_BLOCK_READ:
      return Transfer::Kind::BlockRead;
   case Smbus::REQUEST_BLOCK_WRITE:
      return Transfer::Kind::BlockWrite;
   }
   throw InvalidRequest( "a known type is missing" );
}

void checkLength( const Transfer &transfer ) {
   const auto allow = [&]( const char *what, uint32_t least, uint32_t most ) {
      if ( transfer.length >= least && transfer.length <= most )
         return;
      const std::string expected =
         least == most ? fmt::format( "{}", least ) : fmt::format( "{} to {}", least, most );
      throw InvalidRequest(
         fmt::format( "length {} for a {}, expected {}", transfer.length, what, expected ) );
   };
   switch ( transfer.kind ) {
   case Transfer::Kind::Read:
      return allow( "read", 0, maxTransferBytes );
   case Transfer::Kind::Write:
      return allow( "write", 0, maxTransferBytes );
   case Transfer::Kind::ProcessCall:
      return allow( "process call", 2, 2 );
   case Transfer::Kind::BlockRead:
      return allow( "block read", 0, 0 );
   case Transfer::Kind::BlockWrite:
      return allow( "block write", 1, 255 ); // the count is one byte
   }
}

bool carriesData( Transfer::Kind kind ) {
   return kind != Transfer::Kind::Read && kind != Transfer::Kind::BlockRead;
}

// 0, 1, 5 or 10 ms after a write or read, since memories need 5 or 10 ms to store what was written;
// and 1 ms more for chips that are slow to release the bus.
std::chrono::milliseconds pauseAfter( const AddressWord &word, Transfer::Kind kind ) {
   using std::chrono::milliseconds;
   constexpr milliseconds delays[] = { milliseconds( 0 ), milliseconds( 1 ), milliseconds( 5 ),
                                       milliseconds( 10 ) };
   const bool writes = kind == Transfer::Kind::Write || kind == Transfer::Kind::BlockWrite;
   return delays[writes ? word.writeDelay() : word.readDelay()] + milliseconds( word.extraDelay() );
}

Transfer decodeTransfer( const Smbus::Request &request ) {
   const AddressWord word( request.addr() );
   if ( word.offsetBytes() == 3 )
      throw InvalidRequest( "address size 3, expected 0, 1 or 2" );
   Transfer transfer{ .kind = kindOf( request.type() ),
                      .address = static_cast<uint8_t>( word.address() ),
                      .offset = word.offset(),
                      .offsetBytes = std::max( word.offsetBytes(), 1u ),
                      .length = request.length(),
                      .data = request.data(),
                      .pec = request.pec(),
                      .timeout = 10 * std::chrono::milliseconds( word.busTimeout() ) };
   transfer.pause = pauseAfter( word, transfer.kind );
   checkLength( transfer );
   const size_t expected = carriesData( transfer.kind ) ? transfer.length : 0;
   if ( transfer.data.size() != expected )
      throw InvalidRequest(
         fmt::format( "{} bytes of data, expected {}", transfer.data.size(), expected ) );
   return transfer;
}

RootBusId decodeBus( const Smbus::Request &request ) {
   const AddressWord word( request.addr() );
   return rootBusId( static_cast<Master>( request.mastertype() ), request.pci(), word.accelerator(),
                     word.bus() );
}

void append( const Smbus::Request &request, Transaction &transaction ) {
   requireFields( request );
   const RootBusId bus = decodeBus( request );
   if ( transaction.transfers.empty() )
      transaction.bus = bus;
   else if ( bus != transaction.bus )
      throw InvalidRequest( fmt::format( "on {}, but the transaction is on {}", toString( bus ),
                                         toString( transaction.bus ) ) );
   transaction.transfers.push_back( decodeTransfer( request ) );
}

uint32_t answerBytes( const Transfer &transfer ) {
   return transfer.kind == Transfer::Kind::BlockRead ? 255 : transfer.length;
}

} // namespace

unsigned countRequests( std::string_view bytes ) {
   using google::protobuf::internal::WireFormatLite;
   google::protobuf::io::CodedInputStream stream( reinterpret_cast<const uint8_t *>( bytes.data() ),
                                                  static_cast<int>( bytes.size() ) );
   constexpr uint32_t ofRequest = WireFormatLite::MakeTag(
      Smbus::TransactionRequest::kRequestFieldNumber, WireFormatLite::WIRETYPE_LENGTH_DELIMITED );
   unsigned count = 0;
   while ( const uint32_t tag = stream.ReadTag() ) {
      count += tag == ofRequest;
      if ( !WireFormatLite::SkipField( &stream, tag ) )
         break;
   }
   return count;
}

void parse( std::string_view bytes, Smbus::TransactionRequest &message ) {
   // A request has two bytes at least.
   if ( bytes.size() / 2 > maxRequests && countRequests( bytes ) > maxRequests )
      throw Refused( fmt::format( "more than {} requests in a transaction", maxRequests ) );
   if ( !message.ParseFromArray( bytes.data(), static_cast<int>( bytes.size() ) ) )
      throw Refused( fmt::format( "a frame of {} bytes is not a transaction", bytes.size() ) );
}

void decode( const Smbus::TransactionRequest &message, std::chrono::milliseconds bound,
             Transaction &transaction ) {
   transaction.transfers.clear();
   transaction.retries = message.retries();
   transaction.limit = bound;
   if ( message.timeout_ms() > 0 )
      transaction.limit = std::min( bound, std::chrono::milliseconds( message.timeout_ms() ) );

   transaction.transfers.reserve( static_cast<size_t>( message.request_size() ) );
   uint32_t answerSize = 0;
   for ( const Smbus::Request &request : message.request() ) {
      try {
         append( request, transaction );
      } catch ( const InvalidRequest &reason ) {
         throw Refused( fmt::format( "request {} of {}: {}", transaction.transfers.size() + 1,
                                     message.request_size(), reason.what() ) );
      }
      answerSize += answerBytes( transaction.transfers.back() );
   }
   if ( answerSize > maxAnswerBytes )
      throw Refused( fmt::format( "{} bytes to read, but a transaction may read at most {}",
                                  answerSize, maxAnswerBytes ) );
}

Smbus::TransactionResponse failure( std::string_view error ) {
   Smbus::TransactionResponse response;
   response.set_failed( true );
   response.set_error( std::string( error ) );
   return response;
}

} // namespace Bus
