#include "http/Listener.h"

#include <boost/asio/ip/tcp.hpp>
#include <fmt/format.h>
#include <systemd/sd-daemon.h>

#include <charconv>
#include <optional>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace Http {

namespace {

using boost::asio::ip::tcp;

constexpr auto forms = "\"127.0.0.1:8080\", \"[::1]:8080\" or \"localhost:8080\"";

std::optional<tcp::endpoint> endpointOf( const std::string &address ) {
   const size_t colon = address.rfind( ':' );
   if ( colon == std::string::npos )
      return {};
   std::string host = address.substr( 0, colon );
   if ( host == "localhost" )
      host = "127.0.0.1";
   const bool isSix = host.starts_with( '[' ) && host.ends_with( ']' );
   if ( isSix )
      host = host.substr( 1, host.size() - 2 );
   boost::system::error_code failure;
   const auto ip = boost::asio::ip::make_address( host, failure );
   uint16_t port = 0;
   const char *end = address.data() + address.size();
   const auto number = std::from_chars( address.data() + colon + 1, end, port );
   if ( failure || ip.is_v6() != isSix || number.ec != std::errc() || number.ptr != end ||
        colon + 1 == address.size() )
      return {};
   return tcp::endpoint( ip, port );
}

std::string textOf( const tcp::endpoint &endpoint ) {
   const std::string ip = endpoint.address().to_string();
   return fmt::format( fmt::runtime( endpoint.address().is_v6() ? "[{}]:{}" : "{}:{}" ), ip,
                       endpoint.port() );
}

// Of a descriptor that listens.
std::string nameOf( int fd ) {
   tcp::endpoint endpoint;
   auto size = static_cast<socklen_t>( endpoint.capacity() );
   if ( ::getsockname( fd, endpoint.data(), &size ) != 0 )
      return "";
   endpoint.resize( size );
   return textOf( endpoint );
}

} // namespace

Listener::Listener( std::string name, int family, int fd )
   : name_( std::move( name ) ), family_( family ), fd_( fd ) {}

Listener::Listener( Listener &&other ) noexcept
   : name_( std::move( other.name_ ) ), family_( other.family_ ),
     fd_( std::exchange( other.fd_, -1 ) ), file_( std::move( other.file_ ) ) {}

Listener::~Listener() {
   if ( fd_ >= 0 )
      ::close( fd_ );
}

bool Listener::isLocal() const { return family_ == AF_UNIX; }

int Listener::release() { return std::exchange( fd_, -1 ); }

Listener Listener::atFile( const std::filesystem::path &path ) {
   try {
      if ( path.has_parent_path() )
         std::filesystem::create_directories( path.parent_path() );
      auto file = std::make_unique<Sockets::SocketFile>( path.string(), "" );
      Listener listener( path.string(), AF_UNIX, file->release() );
      listener.file_ = std::move( file );
      return listener;
   } catch ( const std::exception &exception ) {
      throw std::runtime_error( fmt::format( "can't serve at {}", exception.what() ) );
   }
}

Listener Listener::atAddress( const std::string &address, bool anyAddress ) {
   const auto endpoint = endpointOf( address );
   if ( !endpoint )
      throw std::runtime_error(
         fmt::format( "\"{}\" is not an address: it must be as {}", address, forms ) );
   if ( !anyAddress && !endpoint->address().is_loopback() )
      throw std::runtime_error( fmt::format(
         "{} can be reached from other machines, which nothing here encrypts; if that is wanted, "
         "give --http-any-address besides",
         address ) );
   const int fd = ::socket( endpoint->protocol().family(), SOCK_STREAM | SOCK_CLOEXEC, 0 );
   if ( fd < 0 )
      throw std::runtime_error( fmt::format( "can't serve at {}: {}", address,
                                             std::generic_category().message( errno ) ) );
   Listener listener( "", endpoint->protocol().family(), fd );
   const int on = 1;
   // A server that comes again doesn't wait for the connections of the one before.
   ::setsockopt( fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on );
   if ( ::bind( fd, endpoint->data(), static_cast<socklen_t>( endpoint->size() ) ) != 0 ||
        ::listen( fd, SOMAXCONN ) != 0 )
      throw std::runtime_error( fmt::format( "can't serve at {}: {}", address,
                                             std::generic_category().message( errno ) ) );
   listener.name_ = nameOf( fd );
   return listener;
}

std::vector<Listener> Listener::given() {
   std::vector<Listener> listeners;
   const int count = sd_listen_fds( 1 );
   for ( int fd = SD_LISTEN_FDS_START; fd < SD_LISTEN_FDS_START + count; ++fd ) {
      const bool isUnix = sd_is_socket( fd, AF_UNIX, SOCK_STREAM, 1 ) > 0;
      const bool isSix = sd_is_socket( fd, AF_INET6, SOCK_STREAM, 1 ) > 0;
      if ( !isUnix && !isSix && sd_is_socket( fd, AF_INET, SOCK_STREAM, 1 ) <= 0 )
         throw std::runtime_error( fmt::format(
            "the descriptor {} of the socket unit is not a stream socket that listens", fd ) );
      listeners.push_back( Listener( isUnix ? "the socket unit's file" : nameOf( fd ),
                                     isUnix  ? AF_UNIX
                                     : isSix ? AF_INET6
                                             : AF_INET,
                                     fd ) );
   }
   return listeners;
}

} // namespace Http
