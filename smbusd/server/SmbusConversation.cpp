#include "smbusd/server/SmbusConversation.h"

#include "smbus/Decode.h"
#include "sockets/Frames.h"

#include <spdlog/spdlog.h>

#include <algorithm>

namespace Smbusd {

namespace {

// What a request needs beside its data: the message, the transfer that is made of it, and what the
// heap adds.
constexpr size_t bytesPerRequest =
   sizeof( Smbus::Request ) + sizeof( Bus::Transfer ) + sizeof( std::string ) + 64;
// What a response needs beside its data, in the same way.
constexpr size_t bytesPerResponse = sizeof( Smbus::Response ) + sizeof( std::string ) + 64;

// A request has two bytes at least. They are counted only if it matters.
size_t bytesOnceRead( std::string_view message ) {
   const size_t most = std::min<size_t>( message.size() / 2, Bus::maxRequests );
   const size_t bytes = message.size() + most * bytesPerRequest;
   if ( bytes + message.size() <= Buffers::ownBytes )
      return bytes;
   return message.size() +
          std::min<size_t>( Bus::countRequests( message ), Bus::maxRequests ) * bytesPerRequest;
}

// At most: not every transaction is valid.
size_t bytesOfAnswer( const Smbus::TransactionRequest &request ) {
   size_t bytes = 0;
   for ( const Smbus::Request &each : request.request() )
      bytes += bytesPerResponse + std::clamp( each.length(), 255u, Bus::maxTransferBytes );
   return bytes;
}

} // namespace

void SmbusConversation::take( std::string_view message, Buffers::Part &memory ) {
   requestBytes_ = bytesOnceRead( message );
   memory.holds( message.size() + requestBytes_ );
   wrong_.clear();
   try {
      Bus::parse( message, exchange_.request );
   } catch ( const Bus::Refused &reason ) {
      wrong_ = reason.what();
   }
}

std::optional<std::string> SmbusConversation::answer( Buffers::Part &memory ) {
   if ( !wrong_.empty() ) {
      spdlog::warn( "refused: {}", wrong_ );
      return refusal( wrong_ );
   }
   // The request as a message and as transfers, the answer as a message and as a frame.
   const size_t bytes = 2 * requestBytes_ + 2 * bytesOfAnswer( exchange_.request );
   memory.holds( bytes );
   if ( !dispatcher_.carryOut( exchange_, peer_, gate_ ) )
      return {};
   std::string frame = Sockets::framed( exchange_.response );
   if ( bytes > Buffers::keptBytes )
      exchange_ = {};
   return frame;
}

std::string SmbusConversation::refusal( const std::string &reason ) const {
   return Sockets::framed( Bus::failure( reason ) );
}

} // namespace Smbusd
