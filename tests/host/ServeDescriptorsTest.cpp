// The descriptors of serve and of its child.
#include "support/ScriptedHost.h"

#include <boost/asio.hpp>
#include <filesystem>
#include <gmock/gmock.h>
#include <set>

namespace {

using boost::asio::local::stream_protocol;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;

class ServeDescriptorsTest : public ::testing::Test {
 protected:
   ServeDescriptorsTest() {
      folder_.waitFor( "calls", "temp.temperature" );
      client_.connect( folder_.file( "host.sock" ) );
   }

   // Has serve start another child, now that a client is connected.
   void replaceChild() {
      const size_t at = folder_.read( "calls" ).size();
      folder_.write( "gpio.bit", "exit" );
      folder_.waitFor( "calls", "temp.add", at );
   }
   // Without the files that the scripted plug-in has open for a moment.
   std::set<std::string> descriptorsOfChild() const {
      std::set<std::string> all;
      const std::string folder = "/proc/" + std::to_string( serve_.child() ) + "/fd/";
      for ( const auto &entry : std::filesystem::directory_iterator( folder ) ) {
         std::error_code closed;
         const std::string target = std::filesystem::read_symlink( entry, closed ).string();
         if ( !closed && !target.starts_with( folder_.path().string() ) )
            all.insert( entry.path().filename().string() + " " + target );
      }
      return all;
   }
   // What the client hears until the connection ends.
   std::string hear() {
      const timeval limit{ .tv_sec = 5, .tv_usec = 0 };
      ::setsockopt( client_.native_handle(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit );
      std::string heard;
      char chunk[4096];
      ssize_t count = 0;
      while ( ( count = ::recv( client_.native_handle(), chunk, sizeof chunk, 0 ) ) > 0 )
         heard.append( chunk, static_cast<size_t>( count ) );
      return count == 0 ? heard : heard + "(and no end)";
   }

   const TestSupport::PrivateFolder folder_;
   ScriptedHost serve_{ folder_, { "serve", SCRIPTED_BOARD, "--period", "0.1" } };
   boost::asio::io_context loop_;
   stream_protocol::socket client_{ loop_ };
};

TEST_F( ServeDescriptorsTest, TheChildStartsWithItsOwnAlone ) {
   replaceChild();
   // Its standard ones, its socket to the parent, the memory that it shares with it, and what its
   // own event loop opens.
   EXPECT_THAT( descriptorsOfChild(),
                ::testing::Each( MatchesRegex( "0 /dev/.*|[12] pipe:.*|3 socket:.*|"
                                               "4 /memfd:orbis-host .*|[5-9] anon_inode:.*" ) ) );
}

TEST_F( ServeDescriptorsTest, AClientThatClosesAfterItsAnswerHearsTheEnd ) {
   replaceChild();
   boost::asio::write( client_,
                       boost::asio::buffer( std::string( "GET /v1/topology HTTP/1.1\r\nHost: x\r\n"
                                                         "Connection: close\r\n\r\n" ) ) );
   const std::string heard = hear();
   EXPECT_THAT( heard, HasSubstr( "HTTP/1.1 200 OK" ) );
   EXPECT_THAT( heard, ::testing::Not( HasSubstr( "(and no end)" ) ) );
}

} // namespace
