// What a page of `serve` is told of the board.
#include "RunningBoard.h"

#include <gmock/gmock.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>

namespace {

using ::testing::HasSubstr;

// A page that listens. What it is told is kept.
class ListeningPage {
 public:
   ListeningPage() {
      sockaddr_un address{};
      address.sun_family = AF_UNIX;
      std::string( std::getenv( "ORBIS_HOST_SOCKET" ) ).copy( address.sun_path, 100 );
      EXPECT_EQ( connect( fd_, reinterpret_cast<const sockaddr *>( &address ), sizeof address ),
                 0 );
      const timeval longest{ .tv_sec = 0, .tv_usec = 100'000 };
      setsockopt( fd_, SOL_SOCKET, SO_RCVTIMEO, &longest, sizeof longest );
      const std::string request = "GET /v1/live HTTP/1.1\r\nHost: x\r\n\r\n";
      EXPECT_EQ( send( fd_, request.data(), request.size(), MSG_NOSIGNAL ),
                 static_cast<ssize_t>( request.size() ) );
   }
   ~ListeningPage() { close( fd_ ); }
   ListeningPage( const ListeningPage & ) = delete;
   ListeningPage &operator=( const ListeningPage & ) = delete;

   // Waits until it is told these words behind `start`; returns their end.
   size_t hears( const std::string &words, size_t start = 0 ) {
      const auto end = std::chrono::steady_clock::now() + std::chrono::seconds( 30 );
      size_t at = std::string::npos;
      while ( ( at = text_.find( words, start ) ) == std::string::npos &&
              std::chrono::steady_clock::now() < end ) {
         char chunk[16384];
         const ssize_t count = recv( fd_, chunk, sizeof chunk, 0 );
         text_.append( chunk, static_cast<size_t>( std::max<ssize_t>( count, 0 ) ) );
      }
      EXPECT_NE( at, std::string::npos ) << words << " in " << text_.substr( start, 2000 );
      return at == std::string::npos ? start : at + words.size();
   }
   const std::string &text() const { return text_; }

 private:
   const int fd_ = socket( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0 );
   std::string text_{};
};

TEST( ServedPageTest, IsToldWhatChangesOnTheBoard ) {
   RunningBoard board( "kelt" );
   const auto serve = board.serve( { "--period", "0.2" } );
   ListeningPage page;
   size_t at = page.hears( "\nevent: all\ndata: " );
   at = page.hears( "\nevent: news\n", at );
   EXPECT_THAT( page.text(), HasSubstr( "Content-Type: text/event-stream" ) );
   EXPECT_THAT( page.text(), HasSubstr( R"("control":false)" ) );
   page.hears( R"("busses":[{"bus":)", at );
   board.smbus( { "sim", "set", "temp-front", "temperature", "99.5" } );
   at = page.hears( R"({"name":"temp-front","type":"temp_sensor")", at );
   at = page.hears( R"("value":99.5)", at );
   at = page.hears( R"("causes":[{"cause":"temp-front temperature limit")" );
   page.hears( R"("what":"set","cause":"temp-front temperature limit")" );
   board.killServer();
   page.hears( R"("bussesFault":"/)" );
}

} // namespace
