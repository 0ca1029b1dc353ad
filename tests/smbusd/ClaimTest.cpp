// A device belongs to one server.
#include "smbusd/busses/linux/Claim.h"
#include "PrivateFolder.h"
#include "smbusd/busses/IoPortBus.h"
#include "smbusd/busses/linux/DevAdapter.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <functional>

namespace SmbusdTest {

namespace {

using namespace Smbusd;

// Another process, which does something at its beginning and then stays until the end of this.
class OtherProcess {
 public:
   explicit OtherProcess( const std::function<bool()> &begin ) {
      int ends[2];
      EXPECT_EQ( pipe( ends ), 0 );
      pid_ = fork();
      if ( pid_ == 0 ) {
         const char done = begin() ? 'y' : 'n';
         if ( write( ends[1], &done, 1 ) == 1 )
            pause();
         _exit( 0 );
      }
      char done = 0;
      EXPECT_EQ( ::read( ends[0], &done, 1 ), 1 );
      EXPECT_EQ( done, 'y' );
      close( ends[0] );
      close( ends[1] );
   }
   ~OtherProcess() {
      if ( pid_ <= 0 )
         return;
      kill( pid_, SIGKILL );
      waitpid( pid_, nullptr, 0 );
   }
   OtherProcess( const OtherProcess & ) = delete;
   OtherProcess &operator=( const OtherProcess & ) = delete;
   pid_t id() const { return pid_; }

 private:
   pid_t pid_ = -1;
};

class ClaimTest : public ::testing::Test {
 protected:
   ClaimTest() {
      folder.write( "i2c-7", "" );
      folder.write( "port", std::string( 0x400, 'p' ) );
   }
   template <typename Error>
   static std::string complaint( const std::function<void()> &action ) {
      try {
         action();
         return "none";
      } catch ( const Error &error ) {
         return error.what();
      }
   }
   std::string servedBy( const std::string &file, pid_t process ) const {
      return fmt::format( "{}: process {} serves it already; stop that server first",
                          folder.file( file ), process );
   }
   TestSupport::PrivateFolder folder;
   const Linux::Places places{ .sys = folder.file( "sys" ), .dev = folder.path() };
};

TEST_F( ClaimTest, ASecondServerOnAnAdapterIsToldWhoServesIt ) {
   const auto open = [&] { return Linux::openDevAdapter( 7, places ); };
   {
      std::unique_ptr<Linux::Adapter> theirs;
      const OtherProcess first( [&] { return bool( theirs = open() ); } );
      EXPECT_EQ( complaint<Linux::AdapterError>( open ), servedBy( "i2c-7", first.id() ) );
   }
   EXPECT_EQ( complaint<Linux::AdapterError>( open ), "none" ); // it has ended, with its claim
}

TEST_F( ClaimTest, ASecondServerOnPortsIsToldWhoServesThem ) {
   const std::string file = folder.file( "port" );
   IoPortBus theirs( 0x200, 16, file );
   const OtherProcess first( [&] { return theirs.open(), true; } );
   IoPortBus same( 0x20F, 1, file ), next( 0x210, 16, file ), before( 0x1F0, 16, file );
   EXPECT_EQ( complaint<PortError>( [&] { same.open(); } ), servedBy( "port", first.id() ) );
   EXPECT_EQ( complaint<PortError>( [&] { next.open(); } ), "none" );
   EXPECT_EQ( complaint<PortError>( [&] { before.open(); } ), "none" );
}

TEST_F( ClaimTest, OfServersThatStartTogetherOneGetsIt ) {
   const std::string path = folder.file( "i2c-7" );
   int winners[2];
   ASSERT_EQ( pipe( winners ), 0 );
   std::vector<pid_t> starters;
   for ( int i = 0; i < 20; ++i ) {
      starters.push_back( fork() );
      if ( starters.back() == 0 ) {
         const char won = claim( open( path.c_str(), O_RDWR ), 0, 0 ).empty() ? 'y' : 'n';
         if ( write( winners[1], &won, 1 ) == 1 )
            pause(); // and keeps it
         _exit( 0 );
      }
   }
   std::string won( starters.size(), ' ' );
   for ( char &each : won )
      ASSERT_EQ( ::read( winners[0], &each, 1 ), 1 );
   EXPECT_EQ( std::count( won.begin(), won.end(), 'y' ), 1 );
   for ( const pid_t starter : starters ) {
      kill( starter, SIGKILL );
      waitpid( starter, nullptr, 0 );
   }
   close( winners[0] );
   close( winners[1] );
}

} // namespace

} // namespace SmbusdTest
