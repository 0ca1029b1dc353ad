// What a transaction costs the server in system calls, threads and memory. This program's send,
// recv, poll, read, write and operator new come before those of the libraries, and count.
#include "PrivateFolder.h"
#include "RawClient.h"
#include "Requests.h"
#include "smbusd/server/Server.h"
#include "smbusd/server/SmbusConversation.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <poll.h>
#include <sys/socket.h>

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <new>
#include <thread>
#include <vector>

namespace {

// What other threads than the client's did while it counted.
std::atomic<bool> counting = false;
std::thread::id clientThread;
std::mutex mutex;
std::vector<std::pair<std::thread::id, const char *>> events;
std::atomic<long> allocations = 0;

bool counts() { return counting && std::this_thread::get_id() != clientThread; }

void note( const char *event ) {
   if ( !counts() )
      return;
   const std::lock_guard lock( mutex );
   events.emplace_back( std::this_thread::get_id(), event );
}

template <typename Function>
Function *next( const char *name ) {
   return reinterpret_cast<Function *>( dlsym( RTLD_NEXT, name ) );
}

} // namespace

extern "C" ssize_t send( int fd, const void *bytes, size_t size, int flags ) {
   static auto *const real = next<ssize_t( int, const void *, size_t, int )>( "send" );
   note( "send" ); // before the client has it
   return real( fd, bytes, size, flags );
}

extern "C" ssize_t recv( int fd, void *bytes, size_t size, int flags ) {
   static auto *const real = next<ssize_t( int, void *, size_t, int )>( "recv" );
   const ssize_t count = real( fd, bytes, size, flags );
   note( "receive" ); // and not while it waits
   return count;
}

extern "C" int poll( pollfd *fds, nfds_t count, int limit ) {
   static auto *const real = next<int( pollfd *, nfds_t, int )>( "poll" );
   note( "poll" );
   return real( fds, count, limit );
}

extern "C" ssize_t read( int fd, void *bytes, size_t size ) {
   static auto *const real = next<ssize_t( int, void *, size_t )>( "read" );
   note( "read" );
   return real( fd, bytes, size );
}

extern "C" ssize_t write( int fd, const void *bytes, size_t size ) {
   static auto *const real = next<ssize_t( int, const void *, size_t )>( "write" );
   note( "write" );
   return real( fd, bytes, size );
}

void *operator new( size_t size ) {
   allocations += counts();
   if ( void *memory = std::malloc( size ) )
      return memory;
   throw std::bad_alloc();
}
void operator delete( void *memory ) noexcept { std::free( memory ); }
void operator delete( void *memory, size_t ) noexcept { std::free( memory ); }

namespace SmbusdTest {

namespace {

using namespace Smbusd;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using TestSupport::sendByte;
using TestSupport::transaction;

class NotingBus final : public Bus::RootBus {
 public:
   Bus::Outcome transfer( const Bus::Transfer &transfer ) override {
      note( "transfer" );
      return { .data = std::string( transfer.length, 'x' ) };
   }
};

class ServerCostTest : public ::testing::Test {
 protected:
   ServerCostTest() {
      events.reserve( 64 ); // their memory is not the server's
      thread = std::thread( [this] { context.run(); } );
   }
   ~ServerCostTest() override {
      boost::asio::post( context, [this] { server.stop(); } );
      thread.join();
   }
   static Bus::Busses busses() {
      Bus::Busses busses;
      busses.emplace( *Bus::parseRootBusId( "scd(4):1:2" ), std::make_unique<NotingBus>() );
      return busses;
   }
   // What the server does for one transaction, the same as before.
   std::vector<std::string> cost( const Smbus::TransactionRequest &request ) {
      TestSupport::RawClient client( path );
      // The account's ring gets its memory.
      for ( unsigned i = 0; i <= PassedTransfers::capacity; ++i )
         EXPECT_FALSE( client.ask( request ).failed() );
      events.clear();
      allocations = 0;
      clientThread = std::this_thread::get_id();
      counting = true;
      client.ask( request );
      counting = false;
      const std::lock_guard lock( mutex );
      std::vector<std::string> names;
      for ( const auto &[by, event] : events ) {
         EXPECT_EQ( by, events.front().first ) << event;
         names.emplace_back( event );
      }
      return names;
   }

   TestSupport::PrivateFolder folder;
   const std::string path = folder.file( "smbus.sock" );
   const Bus::RealClock clock;
   boost::asio::io_context context;
   Dispatcher dispatcher{ busses(), clock, 2s };
   Buffers buffers{ 64u << 20 };
   Server server{ context, std::make_unique<Sockets::SocketFile>( path, "" ),
                  conversationsWith( dispatcher ), Limits(), buffers };
   std::thread thread;
};

TEST_F( ServerCostTest, ATransactionIsOneReceiveAndOneSendInOneThread ) {
   EXPECT_THAT( cost( transaction( sendByte( 0x70, 1 ), TestSupport::read( 0x48, 0, 2 ),
                                   sendByte( 0x70, 0 ) ) ),
                ElementsAre( "receive", "transfer", "transfer", "transfer", "send" ) );
}

TEST_F( ServerCostTest, ATransactionLikeTheOnesBeforeNeedsNoMemory ) {
   cost( transaction( TestSupport::read( 0x48, 0, 2 ) ) );
   EXPECT_EQ( allocations, 0 );
}

TEST_F( ServerCostTest, ALongAnswerNeedsTheMemoryOfItsBytesAndOfItsFrame ) {
   cost( transaction( TestSupport::read( 0x48, 0, 100 ) ) );
   EXPECT_EQ( allocations, 2 ); // what the bus returned becomes a part of the answer
}

} // namespace

} // namespace SmbusdTest
