// What one exchange costs in system calls and memory. This program's send, recv, poll and operator
// new come before those of the libraries, and count.
#include "PLSocketFixture.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <dlfcn.h>
#include <new>
#include <poll.h>
#include <sys/socket.h>
#include <thread>
#include <vector>

namespace {

thread_local std::vector<std::string> *calls = nullptr; // of the thread that counts
thread_local size_t largestAllocation = 0;
thread_local long allocations = 0;

void note( const char *call ) {
   if ( calls )
      calls->push_back( call );
}

template <typename Function>
Function *next( const char *name ) {
   return reinterpret_cast<Function *>( dlsym( RTLD_NEXT, name ) );
}

} // namespace

extern "C" ssize_t send( int fd, const void *bytes, size_t size, int flags ) {
   static auto *const real = next<ssize_t( int, const void *, size_t, int )>( "send" );
   note( "send" );
   return real( fd, bytes, size, flags );
}

extern "C" ssize_t recv( int fd, void *bytes, size_t size, int flags ) {
   static auto *const real = next<ssize_t( int, void *, size_t, int )>( "recv" );
   note( flags & MSG_PEEK ? "look" : "receive" );
   return real( fd, bytes, size, flags );
}

extern "C" int poll( pollfd *fds, nfds_t count, int limit ) {
   static auto *const real = next<int( pollfd *, nfds_t, int )>( "poll" );
   note( "poll" );
   return real( fds, count, limit );
}

void *operator new( size_t size ) {
   largestAllocation = std::max( largestAllocation, size );
   ++allocations;
   if ( void *memory = std::malloc( size ) )
      return memory;
   throw std::bad_alloc();
}
void operator delete( void *memory ) noexcept { std::free( memory ); }
void operator delete( void *memory, size_t ) noexcept { std::free( memory ); }

namespace PlatformTest {

namespace {

class PLSocketCostTest : public PLSocketFixture {
 protected:
   static void answersAll( const Connection &connection, unsigned ) {
      Smbus::TransactionRequest got;
      while ( connection.readRequest( got ) )
         connection.answer( numbered( 1 ) );
   }
};

TEST_F( PLSocketCostTest, AnExchangeIsOneLookOneSendAndOneReceive ) {
   ScriptedServer server( path, answersAll );
   ASSERT_EQ( ask(), "1" ); // connects
   std::vector<std::string> made;
   calls = &made;
   const std::string answer = ask();
   calls = nullptr;
   EXPECT_EQ( answer, "1" );
   EXPECT_EQ( made, ( std::vector<std::string>{ "look", "send", "receive" } ) );
}

TEST_F( PLSocketCostTest, AnExchangeAllocatesItsAnswerAlone ) {
   ScriptedServer server( path, answersAll );
   ASSERT_EQ( ask(), "1" );
   Smbus::TransactionResponse *response = nullptr;
   const long before = allocations;
   ASSERT_EQ( client.sendRequestWait( &request, &response ), 0 );
   const long exchange = allocations - before;
   std::string bytes;
   ASSERT_TRUE( response->SerializeToString( &bytes ) );
   delete response;
   const long start = allocations;
   auto parsed = std::make_unique<Smbus::TransactionResponse>();
   ASSERT_TRUE( parsed->ParseFromString( bytes ) );
   EXPECT_EQ( exchange, allocations - start );
}

// A server, or what has taken its place, may announce more than it sends.
TEST_F( PLSocketCostTest, MemoryGrowsWithTheBytesThatHaveComeNotWithTheLength ) {
   limitIs( 50 );
   ScriptedServer server( path, []( const Connection &connection, unsigned ) {
      Smbus::TransactionRequest got;
      connection.readRequest( got );
      connection.send( std::string( "\x80\x80\x80\x08", 4 ) + std::string( 600, 'x' ) ); // 16 MiB
      connection.waitForClientToGo();
   } );
   largestAllocation = 0;
   EXPECT_EQ( ask(), "ETIMEDOUT" );
   EXPECT_LT( largestAllocation, 16384u );
}

} // namespace

} // namespace PlatformTest
