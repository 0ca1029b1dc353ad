#include "support/FakeServer.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <gtest/gtest.h>

namespace FakeServer {

int failingSetups, failedDescriptor, setups, socketsMade, socketsReleased;
pl_fd_watcher_handle failedWatcher;
unsigned secondsSlept;
int signals;
std::vector<Smbus::TransactionRequest> received;
bool keepsRequests = true;
std::function<int( Smbus::TransactionRequest *, Smbus::TransactionResponse ** )> answer;

void reset() {
   failingSetups = setups = socketsMade = socketsReleased = 0;
   failedDescriptor = -1;
   failedWatcher = nullptr;
   secondsSlept = 0;
   signals = 0;
   received.clear();
   keepsRequests = true;
   answer = []( Smbus::TransactionRequest *request, Smbus::TransactionResponse **response ) {
      *response = new Smbus::TransactionResponse;
      for ( int i = 0; i < request->request_size(); ++i )
         ( *response )->add_response();
      return 0;
   };
}

void answersWith( std::vector<std::string> data ) {
   answer = [data]( Smbus::TransactionRequest *, Smbus::TransactionResponse **response ) {
      *response = new Smbus::TransactionResponse;
      for ( const auto &bytes : data )
         ( *response )->add_response()->set_data( bytes );
      return 0;
   };
}

std::string inWords( const Smbus::Request &request ) {
   static const char *const types[] = { "read", "write", "call", "readBlock", "writeBlock" };
   const uint64_t addr = request.addr();
   const auto field = [addr]( int low, int bits ) {
      return static_cast<unsigned>( addr >> low & ( ( 1u << bits ) - 1 ) );
   };
   char text[200];
   snprintf(
      text, sizeof( text ), "%s 0x%02x reg 0x%x bus %u accel %u size %u master %d pci %u len %u",
      types[request.type()], field( 32, 7 ), static_cast<unsigned>( addr ), field( 39, 7 ),
      field( 46, 7 ), field( 57, 2 ), request.mastertype(), request.pci(), request.length() );
   std::string words = text;
   if ( request.has_data() ) {
      words += " data";
      for ( unsigned char byte : request.data() ) {
         snprintf( text, sizeof( text ), " %02x", byte );
         words += text;
      }
   }
   return request.pec() ? words + " pec" : words;
}

std::vector<std::string> lastInWords() {
   std::vector<std::string> words;
   for ( const auto &request : received.back().request() )
      words.push_back( inWords( request ) );
   return words;
}

} // namespace FakeServer

namespace PlatformLibrary {

PLSocket::PLSocket() { ++FakeServer::socketsMade; }
PLSocket::~PLSocket() { ++FakeServer::socketsReleased; }

int PLSocket::setup() {
   ++FakeServer::setups;
   if ( FakeServer::failingSetups == 0 )
      return 0;
   --FakeServer::failingSetups;
   fd = FakeServer::failedDescriptor;
   watcher = FakeServer::failedWatcher;
   return -1;
}

int PLSocket::sendRequestWait( Smbus::TransactionRequest *request,
                               Smbus::TransactionResponse **response ) {
   if ( FakeServer::keepsRequests )
      FakeServer::received.push_back( *request );
   return FakeServer::answer( request, response );
}

} // namespace PlatformLibrary

// --wrap of the linker sends the plug-in's sleeps here. They end at a time of the monotonic clock.
extern "C" int __wrap_clock_nanosleep( clockid_t clock, int flags, const timespec *end,
                                       timespec * ) {
   EXPECT_EQ( clock, CLOCK_MONOTONIC );
   EXPECT_EQ( flags, TIMER_ABSTIME );
   if ( FakeServer::signals > 0 ) {
      --FakeServer::signals;
      return EINTR;
   }
   timespec now;
   clock_gettime( CLOCK_MONOTONIC, &now );
   const auto left = static_cast<double>( end->tv_sec - now.tv_sec ) +
                     static_cast<double>( end->tv_nsec - now.tv_nsec ) / 1e9;
   FakeServer::secondsSlept += static_cast<unsigned>( std::lround( left ) );
   return 0;
}
