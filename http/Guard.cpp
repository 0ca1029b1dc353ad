#include "http/Guard.h"

#include <boost/asio/ip/address.hpp>
#include <boost/asio/ip/host_name.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <stdexcept>

namespace Http {

namespace {

namespace fs = std::filesystem;

constexpr size_t shortestToken = 16;

std::string lower( std::string text ) {
   std::transform( text.begin(), text.end(), text.begin(),
                   []( unsigned char c ) { return std::tolower( c ); } );
   return text;
}

// "[::1]:80" and "localhost:80" without the port and the brackets.
std::string nameIn( const std::string &host ) {
   if ( host.starts_with( '[' ) ) {
      const size_t end = host.find( ']' );
      return end == std::string::npos ? "" : host.substr( 1, end - 1 );
   }
   return lower( host.substr( 0, host.find( ':' ) ) );
}

bool isOurs( const std::string &host ) {
   const std::string name = nameIn( host );
   boost::system::error_code failure;
   boost::asio::ip::make_address( name, failure );
   if ( !failure || name == "localhost" )
      return true;
   const std::string machine = lower( boost::asio::ip::host_name( failure ) );
   return !machine.empty() && name == machine; // not "machine.": anybody may own such a name
}

// Takes as long for every wrong token.
bool isEqual( std::string_view one, std::string_view other ) {
   if ( one.size() != other.size() )
      return false;
   unsigned difference = 0;
   for ( size_t i = 0; i < one.size(); ++i )
      difference |= static_cast<unsigned char>( one[i] ) ^ static_cast<unsigned char>( other[i] );
   return difference == 0;
}

} // namespace

Guard::Guard( const fs::path &tokenFile ) {
   std::error_code failure;
   const fs::perms rights = fs::status( tokenFile, failure ).permissions();
   std::ifstream file( tokenFile );
   std::string token;
   if ( failure || !file || !std::getline( file, token ) )
      throw std::runtime_error(
         fmt::format( "{}: can't read a token from it", tokenFile.string() ) );
   token.erase( token.find_last_not_of( " \t\r" ) + 1 );
   if ( ( rights & fs::perms::others_read ) != fs::perms::none )
      throw std::runtime_error( fmt::format(
         "{}: every user may read this token; give the file the mode 0640", tokenFile.string() ) );
   if ( token.size() < shortestToken )
      throw std::runtime_error(
         fmt::format( "{}: the token has {} characters; it needs {} at least", tokenFile.string(),
                      token.size(), shortestToken ) );
   token_ = std::move( token );
}

std::optional<Response> Guard::refusal( const std::string &method,
                                        const Credentials &credentials ) const {
   if ( !isOurs( credentials.host ) )
      return errorResponse( Status::misdirected,
                            fmt::format( "Host is \"{}\"; it must be an IP address, localhost or "
                                         "the name of this machine",
                                         credentials.host ) );
   if ( !credentials.origin.empty() && credentials.origin != "http://" + credentials.host &&
        credentials.origin != "https://" + credentials.host )
      return errorResponse(
         Status::forbidden,
         fmt::format( "a page of \"{}\" must not ask this server", credentials.origin ) );
   if ( method == "GET" || method == "HEAD" )
      return {};
   if ( !token_ )
      return errorResponse( Status::forbidden,
                            "here one can only read: serve runs without --http-control" );
   constexpr std::string_view scheme = "bearer "; // in any case (RFC 9110)
   if ( !lower( credentials.authorization.substr( 0, scheme.size() ) ).starts_with( scheme ) ||
        !isEqual( std::string_view( credentials.authorization ).substr( scheme.size() ), *token_ ) )
      return errorResponse( Status::unauthorized,
                            "this needs the token: the header Authorization: Bearer TOKEN" );
   return {};
}

} // namespace Http
