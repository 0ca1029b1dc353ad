// USB/IP over a socket; the test is the kernel.
#include "TinyUsbFixture.h"

#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace SmbusdTest {

namespace {

using namespace Smbusd::Export;
using namespace std::string_literals;

// The kernel's end of a connection.
class UsbIpTest : public TinyUsbFixture {
 protected:
   UsbIpTest() {
      int ends[2];
      EXPECT_EQ( socketpair( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends ), 0 );
      kernel = ends[0];
      serving = std::thread( [this, fd = ends[1]] {
         UsbIpConnection connection( fd );
         while ( const auto request = connection.receive() )
            connection.answer( device.answer( *request ) );
      } );
   }
   ~UsbIpTest() override {
      close( kernel );
      serving.join(); // it ends with the connection
   }
   static std::string words( std::initializer_list<uint32_t> all ) {
      std::string bytes;
      for ( const uint32_t word : all )
         for ( int shift = 24; shift >= 0; shift -= 8 )
            bytes += static_cast<char>( word >> shift );
      return bytes;
   }
   std::string ask( const std::string &bytes, size_t count ) {
      EXPECT_EQ( send( kernel, bytes.data(), bytes.size(), 0 ), ssize_t( bytes.size() ) );
      std::string answer( count, '?' );
      EXPECT_EQ( recv( kernel, answer.data(), count, MSG_WAITALL ), ssize_t( count ) );
      return answer;
   }
   int kernel = -1;
   std::thread serving;
};

TEST_F( UsbIpTest, AnswersASubmittedTransfer ) {
   // Command, sequence, device, direction in, endpoint; flags, length 4, three unused; setup.
   const std::string submit = words( { 1, 7, 1, 1, 0, 0, 4, 0, 0xFFFFFFFF, 0 } );
   EXPECT_EQ( ask( submit + "\xC1\x01\0\0\0\0\x04\0"s, 52 ),
              words( { 3, 7, 0, 0, 0, 0, 4, 0, 0, 0, 0, 0 } ) + "\x09\x00\xfe\x0e"s );
}

TEST_F( UsbIpTest, ReceivesTheDataOfATransfer ) {
   const std::string submit = words( { 1, 8, 1, 0, 0, 0, 3, 0, 0xFFFFFFFF, 0 } );
   EXPECT_EQ( ask( submit + "\x41\x07\0\0\x48\0\x03\0"s + "\x03\x19\x80", 48 ),
              words( { 3, 8, 0, 0, 0, 0, 3, 0, 0, 0, 0, 0 } ) );
   EXPECT_EQ( thermometer.tOs(), 25.5 );
}

TEST_F( UsbIpTest, StallsUnknownRequestsAndAcknowledgesUnlinks ) {
   const std::string submit = words( { 1, 9, 1, 1, 0, 0, 10, 0, 0xFFFFFFFF, 0 } );
   EXPECT_EQ( ask( submit + "\x80\x06\0\x06\0\0\x0A\0"s, 48 ),
              words( { 3, 9, 0, 0, 0, 0xFFFFFFE0, 0, 0, 0, 0, 0, 0 } ) ); // -EPIPE
   EXPECT_EQ( ask( words( { 2, 10, 1, 0, 0, 9, 0, 0, 0, 0, 0, 0 } ), 48 ),
              words( { 4, 10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0 } ) );
}

} // namespace

} // namespace SmbusdTest
