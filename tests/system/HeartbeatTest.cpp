// What the programs tell the system's manager.
#include "PrivateFolder.h"
#include "StartedProgram.h"

#include <gmock/gmock.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>

namespace {

using TestSupport::StartedProgram;

class HeartbeatTest : public ::testing::Test {
 protected:
   HeartbeatTest() {
      sockaddr_un address{};
      address.sun_family = AF_UNIX;
      path_.copy( address.sun_path, sizeof address.sun_path - 1 );
      EXPECT_EQ( bind( fd_, reinterpret_cast<const sockaddr *>( &address ), sizeof address ), 0 );
      const timeval longest{ .tv_sec = 20, .tv_usec = 0 };
      setsockopt( fd_, SOL_SOCKET, SO_RCVTIMEO, &longest, sizeof longest );
   }
   ~HeartbeatTest() override { close( fd_ ); }
   // The next message.
   std::string hear() const {
      char message[256];
      const ssize_t size = recv( fd_, message, sizeof message, 0 );
      return size < 0 ? "nothing" : std::string( message, static_cast<size_t>( size ) );
   }
   // Ready once it listens, and then a beat several times in each limit.
   void expectBeats( const std::string &socket ) const {
      EXPECT_EQ( hear(), "READY=1" );
      EXPECT_EQ( access( socket.c_str(), F_OK ), 0 );
      for ( int i = 0; i < 4; ++i )
         EXPECT_EQ( hear(), "WATCHDOG=1" );
   }

   const TestSupport::PrivateFolder folder_;
   const std::string path_ = folder_.file( "manager" );
   const int fd_ = socket( AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0 );
   const std::string smbus_ = folder_.file( "smbus.sock" ), host_ = folder_.file( "host.sock" );
   const TestSupport::ProgramSettings settings_{
      .errorFile = folder_.file( "log" ),
      .environment = { "NOTIFY_SOCKET=" + path_, "WATCHDOG_USEC=60000",
                       "ORBIS_SMBUS_SOCKET=" + smbus_, "ORBIS_HOST_SOCKET=" + host_ }
   };
};

TEST_F( HeartbeatTest, TheServerTellsThatItIsReadyAndThatItsLoopTurns ) {
   StartedProgram server( { ORBIS_SMBUSD, "--simulate", BOARDS "/kelt/topology.json",
                            "--simulation", BOARDS "/kelt/simulation.json" },
                          settings_ );
   expectBeats( smbus_ );
   server.signal( SIGTERM );
   EXPECT_EQ( server.wait(), 0 ); // the beats don't keep it
}

TEST_F( HeartbeatTest, ServeTellsThatItIsReadyAndThatItsLoopTurns ) {
   StartedProgram serve( { ORBIS_HOST, "serve", BOARDS "/kelt" }, settings_ );
   expectBeats( host_ );
   serve.signal( SIGTERM );
   EXPECT_EQ( serve.wait(), 0 );
}

} // namespace
