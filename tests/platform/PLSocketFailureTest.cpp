#include "PLSocketFixture.h"

#include <gmock/gmock.h>

#include <sys/socket.h>
#include <sys/un.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <semaphore>
#include <vector>

namespace PlatformTest {

namespace {

using PLSocketFailureTest = PLSocketFixture;
using std::chrono::milliseconds;
using namespace std::chrono_literals;

// Reads the request and sends these bytes in answer, then closes.
ScriptedServer::Script answersWith( const std::string &bytes ) {
   return [bytes]( const Connection &connection, unsigned ) {
      Smbus::TransactionRequest got;
      connection.readRequest( got );
      connection.send( bytes );
   };
}

void staysSilent( const Connection &connection, unsigned ) { connection.waitForClientToGo(); }

size_t openDescriptors() {
   const std::filesystem::directory_iterator first( "/proc/self/fd" );
   return static_cast<size_t>( std::distance( first, {} ) );
}

TEST_F( PLSocketFailureTest, FailsWhenThereIsNoServer ) {
   EXPECT_LT( client.setup(), 0 );
   EXPECT_EQ( errno, ENOENT );
   EXPECT_EQ( client.fd, -1 );
   EXPECT_EQ( ask(), "ENOENT" );
}

TEST_F( PLSocketFailureTest, FailsAtTheSocketOfADeadServer ) {
   { ScriptedServer dead( path, staysSilent ); }
   EXPECT_EQ( ask(), "ECONNREFUSED" );
}

TEST_F( PLSocketFailureTest, UsesTheDefaultPathWhenTheVariableIsUnsetOrEmpty ) {
   if ( std::filesystem::exists( "/run/orbis/smbus.sock" ) )
      GTEST_SKIP() << "a server of this machine is there";
   ScriptedServer elsewhere( path, staysSilent );
   setenv( "ORBIS_SMBUS_SOCKET", "", 1 );
   EXPECT_EQ( ask(), "ENOENT" );
   unsetenv( "ORBIS_SMBUS_SOCKET" );
   EXPECT_EQ( ask(), "ENOENT" );
}

TEST_F( PLSocketFailureTest, RefusesAPathTooLongForASocket ) {
   setenv( "ORBIS_SMBUS_SOCKET", std::string( 108, 'x' ).c_str(), 1 );
   EXPECT_EQ( ask(), "ENAMETOOLONG" );
}

TEST_F( PLSocketFailureTest, TimesOutWhenTheServerDoesNotAnswer ) {
   limitIs( 50 );
   ScriptedServer server( path, staysSilent );
   const auto start = std::chrono::steady_clock::now();
   EXPECT_EQ( ask(), "ETIMEDOUT" );
   const auto taken = std::chrono::steady_clock::now() - start;
   EXPECT_GE( taken, milliseconds( 50 ) );
   EXPECT_LT( taken, milliseconds( 2000 ) );
}

TEST_F( PLSocketFailureTest, TimesOutWhenTheAnswerComesTooSlowly ) {
   limitIs( 60 );
   ScriptedServer server( path, []( const Connection &connection, unsigned ) {
      Smbus::TransactionRequest got;
      connection.readRequest( got );
      connection.send( "\x7f" );
      for ( int i = 0; i < 20; ++i ) {
         std::this_thread::sleep_for( milliseconds( 10 ) ); // each byte is in time
         connection.send( "x" );
      }
   } );
   EXPECT_EQ( ask(), "ETIMEDOUT" );
}

TEST_F( PLSocketFailureTest, TimesOutWhenTheServerDoesNotReadTheRequest ) {
   limitIs( 50 );
   std::binary_semaphore givenUp( 0 );
   ScriptedServer server( path, [&]( const Connection &, unsigned ) { givenUp.acquire(); } );
   request.mutable_request( 0 )->set_data( std::string( 8u << 20, 'y' ) ); // over any socket buffer
   EXPECT_EQ( ask(), "ETIMEDOUT" );
   givenUp.release();
}

TEST_F( PLSocketFailureTest, TimesOutWhenTheServerDoesNotAccept ) {
   limitIs( 50 );
   ScriptedServer server( path, nullptr, 0 ); // a backlog of 0 holds one connection
   PlatformLibrary::PLSocket first;
   ASSERT_EQ( first.setup(), 0 );
   EXPECT_LT( client.setup(), 0 );
   EXPECT_EQ( errno, ETIMEDOUT );
   EXPECT_EQ( ask(), "ETIMEDOUT" );
   close( first.fd );
}

// A host tries again every second. It must not wait longer for a server that does not accept.
TEST_F( PLSocketFailureTest, TriesToConnectForASecondWhateverTheTimeLimit ) {
   ScriptedServer server( path, nullptr, 0 );
   PlatformLibrary::PLSocket first;
   ASSERT_EQ( first.setup(), 0 );
   setenv( "ORBIS_SMBUS_TIMEOUT_MS", "8000", 1 );
   const auto start = std::chrono::steady_clock::now();
   EXPECT_LT( client.setup(), 0 );
   EXPECT_EQ( errno, ETIMEDOUT );
   const auto took = std::chrono::steady_clock::now() - start;
   EXPECT_GE( took, 900ms );
   EXPECT_LT( took, 6s );
   close( first.fd );
}

TEST_F( PLSocketFailureTest, UsesTheDefaultTimeLimitWhenTheVariableIsInvalid ) {
   for ( const char *senseless : { "", "0", "-5", "soon", "12x", "99999999999" } ) {
      setenv( "ORBIS_SMBUS_TIMEOUT_MS", senseless, 1 );
      ScriptedServer server( path, answersWith( std::string( 1, '\0' ) ) );
      EXPECT_EQ( ask(), "empty" ) << senseless;
   }
}

TEST_F( PLSocketFailureTest, FailsWhenTheServerDisconnectsBeforeItsAnswer ) {
   ScriptedServer server( path, answersWith( "" ) );
   EXPECT_EQ( ask(), "ECONNRESET" );
}

TEST_F( PLSocketFailureTest, RefusesAnIncompleteFrame ) {
   const std::string whole = numbered( 12345 ).SerializeAsString();
   const std::string frame = static_cast<char>( whole.size() ) + whole;
   for ( size_t length = 1; length < frame.size(); ++length ) {
      ScriptedServer server( path, answersWith( frame.substr( 0, length ) ) );
      EXPECT_EQ( ask(), "EPROTO" ) << length;
   }
}

TEST_F( PLSocketFailureTest, RefusesFramesThatCannotBeParsed ) {
   const std::vector<std::string> senseless{
      std::string( 10, '\xff' ) + '\x01',   // a length that is not a varint
      std::string( "\x02\x0a\x05", 3 ),     // a field that is longer than its frame
      std::string( "\x03\xff\xff\xff", 4 ), // no field at all
      "\x04torn",                           // the end of a group without a start
      "\x04tornbehind"
   };
   for ( const std::string &bytes : senseless ) {
      ScriptedServer server( path, answersWith( bytes ) );
      EXPECT_EQ( ask(), "EPROTO" ) << ::testing::PrintToString( bytes );
   }
}

TEST_F( PLSocketFailureTest, RefusesAnEndlessLengthAtOnce ) {
   ScriptedServer server( path, []( const Connection &connection, unsigned ) {
      Smbus::TransactionRequest got;
      connection.readRequest( got );
      connection.send( std::string( 10, '\xff' ) );
      connection.waitForClientToGo();
   } );
   EXPECT_EQ( ask(), "EPROTO" );
}

TEST_F( PLSocketFailureTest, RefusesAnOversizedFrameAtOnce ) {
   const std::vector<std::string> lengths{
      std::string( "\x81\x80\x80\x08" ),     // 16 MiB and a byte
      std::string( "\x85\x80\x80\x80\x10" ), // 4 GiB and five: not cut to five
      std::string( 9, '\xff' ) + '\x01'
   }; // the largest there is
   for ( const std::string &bytes : lengths ) {
      ScriptedServer server( path, [&]( const Connection &connection, unsigned ) {
         connection.send( bytes );
         connection.waitForClientToGo();
      } );
      ASSERT_EQ( client.setup(), 0 );
      EXPECT_EQ( ask(), "EPROTO" ) << ::testing::PrintToString( bytes );
   }
}

TEST_F( PLSocketFailureTest, DoesNotSendAnOversizedFrame ) {
   ScriptedServer server( path, staysSilent );
   request.mutable_request( 0 )->set_data( std::string( 16u << 20, 'y' ) );
   EXPECT_EQ( ask(), "EPROTO" );
}

TEST_F( PLSocketFailureTest, NeverRaisesSigpipe ) {
   struct sigaction before {};
   sigaction( SIGPIPE, nullptr, &before );
   ASSERT_EQ( before.sa_handler, SIG_DFL ); // a SIGPIPE would end this test
   request.mutable_request( 0 )->set_data( std::string( 8u << 20, 'y' ) );
   ScriptedServer server( path, []( const Connection &, unsigned ) {} );
   for ( int i = 0; i < 100; ++i )
      EXPECT_THAT( ask(), ::testing::AnyOf( "EPIPE", "ECONNRESET" ) );
}

TEST_F( PLSocketFailureTest, NeverSendsARequestTwice ) {
   std::atomic<int> requests = 0;
   ScriptedServer server( path, [&]( const Connection &connection, unsigned ) {
      Smbus::TransactionRequest got;
      requests += connection.readRequest( got );
   } );
   EXPECT_EQ( ask(), "ECONNRESET" );
   server.stop();
   EXPECT_EQ( requests, 1 );
}

TEST_F( PLSocketFailureTest, LeaksNoDescriptorInTenThousandFailures ) {
   ScriptedServer server( path, []( const Connection &connection, unsigned number ) {
      Smbus::TransactionRequest got;
      if ( number % 3 != 0 )
         connection.readRequest( got );
      if ( number % 3 == 2 )
         connection.send( "\x05torn" );
   } );
   const std::string elsewhere = folder.file( "elsewhere.sock" );
   const size_t before = openDescriptors();
   for ( int i = 0; i < 10'000; ++i ) {
      setenv( "ORBIS_SMBUS_SOCKET", ( i % 4 == 0 ? elsewhere : path ).c_str(), 1 );
      ASSERT_NE( ask(), "empty" );
      ASSERT_EQ( client.fd, -1 );
   }
   server.stop();
   EXPECT_EQ( openDescriptors(), before - 1 ); // the listener, which the test closed itself
}

} // namespace

} // namespace PlatformTest
