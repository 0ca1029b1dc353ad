// What `serve` tells of the busses is what the server has counted.
#include "RunningBoard.h"

#include <gmock/gmock.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

// The answer to a GET of the path, with its header.
std::string get( const std::string &path ) {
   sockaddr_un address{};
   address.sun_family = AF_UNIX;
   std::string( std::getenv( "ORBIS_HOST_SOCKET" ) ).copy( address.sun_path, 100 );
   const int fd = socket( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0 );
   std::string answer;
   if ( connect( fd, reinterpret_cast<const sockaddr *>( &address ), sizeof address ) == 0 ) {
      const std::string request = "GET " + path + " HTTP/1.0\r\n\r\n";
      send( fd, request.data(), request.size(), MSG_NOSIGNAL );
      char chunk[4096];
      for ( ssize_t count; ( count = recv( fd, chunk, sizeof chunk, 0 ) ) > 0; )
         answer.append( chunk, static_cast<size_t>( count ) );
   }
   close( fd );
   return answer;
}

TEST( ServedBussesTest, AreThoseOfTheServer ) {
   RunningBoard board( "kelt" );
   board.show(); // reads all of it
   const auto serve = board.serve( { "--period", "3600" } );
   EXPECT_THAT( get( "/v1/busses" ),
                AllOf( HasSubstr( "200 OK" ), HasSubstr( R"("bus":"scd(4):1:2","clock":100000)" ),
                       HasSubstr( R"("path":"0x70=1")" ),
                       HasSubstr( R"("program":"orbis-host")" ) ) );
   board.killServer();
   EXPECT_THAT( get( "/v1/busses" ),
                AllOf( HasSubstr( "503 Service Unavailable" ),
                       HasSubstr( ".control: its server has ended; start it again" ) ) );
}

TEST( ServedBussesTest, AreInTheMetricsAlsoWhenTheServerHasEnded ) {
   RunningBoard board( "kelt" );
   board.show();
   const auto serve = board.serve( { "--period", "3600" } );
   const std::string transfers = R"(orbis_bus_transfers_total{bus="scd(4):1:2"} )";
   std::string metrics;
   for ( int tries = 0; tries < 1000 && metrics.find( transfers ) == std::string::npos; ++tries )
      metrics = get( "/metrics" ); // a slow machine does not answer within the time of a scrape
   EXPECT_THAT( metrics,
                AllOf( HasSubstr( "200 OK" ),
                       HasSubstr( "Content-Type: text/plain; version=0.0.4; charset=utf-8" ),
                       HasSubstr( transfers ), HasSubstr( "orbis_plug_in_starts_total 1\n" ) ) );
   board.killServer();
   EXPECT_THAT( get( "/metrics" ),
                AllOf( HasSubstr( transfers ), HasSubstr( "orbis_bus_accounts_age_seconds" ),
                       HasSubstr( R"(orbis_http_requests_total{code="200"} )" ) ) );
}

} // namespace
