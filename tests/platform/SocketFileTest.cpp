#include "sockets/SocketFile.h"
#include "PrivateFolder.h"
#include "RawClient.h"

#include <gtest/gtest.h>

#include <grp.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <barrier>
#include <filesystem>
#include <memory>
#include <thread>
#include <vector>

namespace PlatformTest {

namespace {

class SocketFileTest : public ::testing::Test {
 protected:
   std::string refusal( const std::string &at, const std::string &group = {} ) {
      try {
         const Sockets::SocketFile file( at, group );
         return "none";
      } catch ( const std::runtime_error &error ) {
         return error.what();
      }
   }
   void leaveADeadServersFile() const {
      {
         const Sockets::SocketFile dead( path, "" );
         std::filesystem::create_hard_link( path, folder.file( "kept" ) );
      }
      std::filesystem::rename( folder.file( "kept" ), path );
   }
   struct stat status() const {
      struct stat found {};
      stat( path.c_str(), &found );
      return found;
   }
   TestSupport::PrivateFolder folder;
   const std::string path = folder.file( "smbus.sock" );
};

TEST_F( SocketFileTest, HasMode0660WhateverTheUmask ) {
   for ( const mode_t mask : { 0000, 0022, 0077 } ) {
      umask( mask );
      const Sockets::SocketFile file( path, "" );
      EXPECT_EQ( status().st_mode & 07777, 0660u ) << mask;
      EXPECT_TRUE( S_ISSOCK( status().st_mode ) );
   }
}

TEST_F( SocketFileTest, BelongsToTheGivenGroup ) {
   if ( geteuid() != 0 )
      GTEST_SKIP() << "only root may give it to any group";
   const group *daemon = getgrnam( "daemon" );
   ASSERT_NE( daemon, nullptr );
   const gid_t due = daemon->gr_gid;
   const Sockets::SocketFile file( path, "daemon" );
   EXPECT_EQ( status().st_gid, due );
   EXPECT_EQ( status().st_mode & 07777, 0660u );
}

TEST_F( SocketFileTest, RefusesAnUnknownGroupAndLeavesNoFile ) {
   EXPECT_EQ( refusal( path, "no-such-group" ), "there is no group no-such-group" );
   EXPECT_FALSE( std::filesystem::exists( path ) );
}

TEST_F( SocketFileTest, RemovesItsFile ) {
   { const Sockets::SocketFile file( path, "" ); }
   EXPECT_FALSE( std::filesystem::exists( path ) );
}

TEST_F( SocketFileTest, KeepsAFileThatReplacedItsOwn ) {
   {
      const Sockets::SocketFile file( path, "" );
      unlink( path.c_str() );
      folder.write( "smbus.sock", "another's" );
   }
   EXPECT_TRUE( std::filesystem::exists( path ) );
}

TEST_F( SocketFileTest, ReplacesTheFileOfADeadServer ) {
   leaveADeadServersFile();
   EXPECT_EQ( refusal( path ), "none" );
}

TEST_F( SocketFileTest, RefusesTheFileOfARunningServerAndKeepsIt ) {
   const Sockets::SocketFile living( path, "" );
   EXPECT_EQ( refusal( path ), path + ": another server is running, process " +
                                  std::to_string( getpid() ) +
                                  "; stop it first, or use another path" );
   EXPECT_TRUE( S_ISSOCK( status().st_mode ) );
}

TEST_F( SocketFileTest, RefusesTheFileOfAServerThatIsTooBusyToAnswer ) {
   Sockets::SocketFile busy( path, "" );
   const int listener = busy.release();
   listen( listener, 0 ); // room for one
   const TestSupport::RawClient waiting( path );
   EXPECT_EQ( refusal( path ),
              path + ": another server is running; stop it first, or use another path" );
   close( listener );
}

// Each finds the file of the dead server.
TEST_F( SocketFileTest, OfServersThatStartTogetherOneRuns ) {
   for ( int round = 0; round < 20; ++round ) {
      leaveADeadServersFile();
      std::atomic<int> running = 0;
      std::vector<std::unique_ptr<Sockets::SocketFile>> files( 8 );
      std::vector<std::thread> starters;
      std::barrier start( 8 );
      for ( auto &file : files )
         starters.emplace_back( [&] {
            start.arrive_and_wait();
            try {
               file = std::make_unique<Sockets::SocketFile>( path, "" );
               ++running;
            } catch ( const std::runtime_error & ) { // another one is
            }
         } );
      for ( std::thread &starter : starters )
         starter.join();
      EXPECT_EQ( running, 1 );
      EXPECT_EQ( Sockets::tryToConnect( path ), 0 );
   }
}

TEST_F( SocketFileTest, RefusesAFileThatIsNotASocketAndKeepsIt ) {
   folder.write( "smbus.sock", "precious" );
   EXPECT_EQ( refusal( path ), path + ": not a socket" );
   EXPECT_TRUE( std::filesystem::exists( path ) );
}

TEST_F( SocketFileTest, RefusesAFolderThatDoesNotExist ) {
   const std::string nowhere = folder.file( "nowhere/smbus.sock" );
   EXPECT_EQ( refusal( nowhere ), nowhere + ": bind failed: No such file or directory" );
}

TEST_F( SocketFileTest, RefusesAPathTooLongForASocket ) {
   const std::string longPath( 108, 'x' );
   EXPECT_EQ( refusal( longPath ),
              longPath + ": the path of a socket must have 1 to 107 characters" );
}

} // namespace

} // namespace PlatformTest
