#include "smbusd/export/UsbIp.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace Smbusd::Export {

namespace {

// A header has words 0 to 4, then words that depend on the command. All words are big-endian; the
// setup bytes are not words.
enum Command : uint32_t { Submit = 1, Unlink = 2, RetSubmit = 3, RetUnlink = 4 };

constexpr int32_t stalled = -EPIPE; // how the kernel reports a stall

struct Header {
   std::array<uint32_t, 12> words{};

   uint32_t at( size_t i ) const { return ntohl( words[i] ); }
   void set( size_t i, uint32_t value ) { words[i] = htonl( value ); }
   uint32_t command() const { return at( 0 ); }
   uint32_t sequence() const { return at( 1 ); }
   bool toHost() const { return at( 3 ) == 1; }
   uint32_t bufferLength() const { return at( 6 ); }
   const uint8_t *setup() const { return reinterpret_cast<const uint8_t *>( &words[10] ); }
};
static_assert( sizeof( Header ) == 48 );

Header reply( Command command, uint32_t sequence, int32_t status, size_t actualLength ) {
   Header header;
   header.set( 0, command );
   header.set( 1, sequence );
   header.set( 5, static_cast<uint32_t>( status ) );
   header.set( 6, static_cast<uint32_t>( actualLength ) );
   return header;
}

bool receiveAll( int fd, void *bytes, size_t count ) {
   return count == 0 || recv( fd, bytes, count, MSG_WAITALL ) == static_cast<ssize_t>( count );
}

bool sendAll( int fd, const std::string &bytes ) {
   for ( size_t sent = 0; sent < bytes.size(); ) {
      const ssize_t count = send( fd, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL );
      if ( count < 0 && errno != EINTR )
         return false;
      sent += static_cast<size_t>( std::max<ssize_t>( count, 0 ) );
   }
   return true;
}

std::string bytesOf( const Header &header ) {
   return { reinterpret_cast<const char *>( &header ), sizeof header };
}

uint16_t little( const uint8_t *bytes ) {
   return static_cast<uint16_t>( bytes[0] | bytes[1] << 8 );
}

} // namespace

UsbIpConnection::~UsbIpConnection() { close( fd_ ); }

void UsbIpConnection::end() { shutdown( fd_, SHUT_RDWR ); }

std::optional<ControlRequest> UsbIpConnection::receive() {
   Header header;
   while ( receiveAll( fd_, &header, sizeof header ) ) {
      if ( header.command() == Unlink ) {
         if ( !sendAll( fd_, bytesOf( reply( RetUnlink, header.sequence(), 0, 0 ) ) ) )
            return {};
         continue;
      }
      constexpr uint32_t maxBytes = 0xFFFF; // of a control transfer
      if ( header.command() != Submit || header.bufferLength() > maxBytes )
         return {};
      sequence_ = header.sequence();
      toHost_ = header.toHost();
      const uint8_t *setup = header.setup();
      ControlRequest request{ setup[0], setup[1], little( setup + 2 ), little( setup + 4 ),
                              little( setup + 6 ) };
      if ( !toHost_ )
         request.data.resize( header.bufferLength() );
      sent_ = request.data.size();
      if ( !receiveAll( fd_, request.data.data(), request.data.size() ) )
         return {};
      return request;
   }
   return {};
}

bool UsbIpConnection::answer( const ControlAnswer &answer ) {
   const std::string data = toHost_ && answer ? *answer : "";
   const Header header =
      reply( RetSubmit, sequence_, answer ? 0 : stalled, toHost_ ? data.size() : sent_ );
   return sendAll( fd_, bytesOf( header ) + data );
}

} // namespace Smbusd::Export
