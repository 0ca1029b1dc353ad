// A client's message to the server, from its bytes to the answer. The bus answers with the bytes of
// the message itself, and now and then not at all.
#include "fuzz/Expect.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/SmallBoard.h"
#include "smbus/Decode.h"
#include "smbusd/server/SmbusConversation.h"
#include "sockets/Frames.h"

#include <spdlog/spdlog.h>

namespace {

class Echo final : public Bus::RootBus {
 public:
   explicit Echo( std::string_view &bytes ) : bytes_( bytes ) {}
   Bus::Outcome transfer( const Bus::Transfer &transfer ) override {
      Fuzz::expect( transfer.address < 128 && transfer.length <= Bus::maxTransferBytes,
                    "only a valid transfer gets to a bus" );
      const auto byte = static_cast<uint8_t>( bytes_[next_++ % bytes_.size()] );
      if ( byte % 16 == 0 )
         return { .error = std::string( Bus::noAddressAcknowledge ), .final = byte % 32 == 0 };
      using Kind = Bus::Transfer::Kind;
      switch ( transfer.kind ) {
      case Kind::Read:
         return { .data = std::string( std::max( 1u, transfer.length ), bytes_[0] ) };
      case Kind::ProcessCall:
         return { .data = std::string( 2, bytes_[0] ) };
      case Kind::BlockRead:
         return { .data = std::string( byte, bytes_[0] ) };
      case Kind::Write:
      case Kind::BlockWrite:
         Fuzz::expect( transfer.data.size() == transfer.length, "a write has its bytes" );
      }
      return {};
   }

 private:
   const std::string_view &bytes_;
   size_t next_ = 0;
};

void checkAnswer( const std::string &frame, std::string_view message ) {
   const Sockets::Frame first = Sockets::firstFrame( frame );
   Fuzz::expect( first.state == Sockets::Frame::State::Whole && first.size == frame.size(),
                 "an answer is one frame" );
   Smbus::TransactionResponse response;
   Fuzz::expect(
      response.ParseFromArray( first.message.data(), static_cast<int>( first.message.size() ) ),
      "an answer is a response" );
   Fuzz::expect( response.failed() == !response.error().empty(), "a failure has its reason" );
   const auto requests = static_cast<int>( Bus::countRequests( message ) );
   Fuzz::expect( response.response_size() <= requests, "no more answers than requests" );
   Fuzz::expect( response.failed() || response.response_size() == requests,
                 "without an error all requests are answered" );
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size ) {
   static const Fuzz::NoTime clock;
   spdlog::set_level( spdlog::level::off );
   std::string_view message = Fuzz::textOf( data, size );
   if ( message.empty() )
      return 0;
   Bus::Busses busses;
   for ( const char *name : { "i2c:0", "scd(4):1:2" } )
      busses.emplace( Bus::parseRootBusId( name ).value(), std::make_unique<Echo>( message ) );
   Smbusd::Dispatcher dispatcher( std::move( busses ), clock, std::chrono::seconds( 1 ) );
   Smbusd::Buffers buffers( 64u << 20 );
   Smbusd::Buffers::Part memory( buffers );
   Smbusd::SmbusConversation conversation( dispatcher, {}, nullptr );
   conversation.take( message, memory );
   if ( const auto frame = conversation.answer( memory ) )
      checkAnswer( *frame, message );
   return 0;
}
