// watch and the terminal that it is on.
#include "DrawnProgram.h"
#include "PrivateFolder.h"

#include <gmock/gmock.h>
#include <termios.h>

#include <csignal>
#include <fmt/format.h>
#include <fstream>

namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using TestSupport::DrawnProgram;

class WatchTerminalTest : public ::testing::Test {
 protected:
   std::string command( const std::string &more = "" ) const {
      return fmt::format( "{} --plugin {} --drivers {}/libScriptedPlugin.drivers.json watch {} "
                          "--period 0.1 {}",
                          ORBIS_HOST, SCRIPTED_PLUGIN, SCRIPTED_BOARD, SCRIPTED_BOARD, more );
   }
   std::vector<std::string> environment( const std::string &more = "ANY=" ) const {
      return { "SCRIPT=" + folder.path().string(),
               "ORBIS_HOST_SOCKET=" + folder.file( "host.sock" ), more };
   }
   // In a shell, as a person starts it, which then says how the terminal is.
   std::vector<std::string> inShell( const std::string &words ) const {
      return { "/bin/bash", "-c",
               fmt::format(
                  "stty -a > {0}/before; {1}; stty -a > {0}/after; echo it is over; read x",
                  folder.path().string(), words ) };
   }
   void expectItIsAsBefore( DrawnProgram &shell ) {
      shell.waitFor( "it is over" );
      EXPECT_FALSE( shell.screen().isFullScreen() );
      EXPECT_TRUE( shell.screen().isCursorShown() );
      EXPECT_EQ( folder.read( "after" ), folder.read( "before" ) );
      EXPECT_THAT( folder.read( "after" ), HasSubstr( " echo " ) );
   }
   // The process of watch below the shell.
   static pid_t watchBelow( const DrawnProgram &, pid_t shell ) {
      std::ifstream children( fmt::format( "/proc/{0}/task/{0}/children", shell ) );
      pid_t child = -1;
      children >> child;
      return child;
   }

   const TestSupport::PrivateFolder folder;
};

TEST_F( WatchTerminalTest, FillsTheScreenUntilQ ) {
   DrawnProgram shell( inShell( command() ), environment() );
   shell.waitFor( "temp ok" );
   EXPECT_TRUE( shell.screen().isFullScreen() );
   EXPECT_FALSE( shell.screen().isCursorShown() );
   shell.type( "q" );
   expectItIsAsBefore( shell );
}

TEST_F( WatchTerminalTest, CtrlCEndsIt ) {
   DrawnProgram shell( inShell( "trap : INT; " + command() ), environment() );
   shell.waitFor( "temp ok" );
   shell.type( "\x03" );
   expectItIsAsBefore( shell );
}

// Escape, a key of another terminal, and Alt with a letter.
TEST_F( WatchTerminalTest, KeysThatItDoesNotKnowAreNotItsEnd ) {
   DrawnProgram shell( inShell( command() ), environment() );
   shell.waitFor( "temp ok" );
   for ( const char *key : { "\x1b", "\x1b[15~", "\x1b[I", "\x1bx" } )
      shell.type( key );
   shell.type( "?" );
   shell.waitFor( "Keys" );
   shell.type( "?q" );
   expectItIsAsBefore( shell );
}

TEST_F( WatchTerminalTest, LeavesTheTerminalAsItWasAfterEverySignal ) {
   for ( const int signal : { SIGTERM, SIGHUP, SIGINT, SIGQUIT, SIGSEGV, SIGABRT, SIGKILL } ) {
      SCOPED_TRACE( signal );
      DrawnProgram shell( inShell( "ulimit -c 0; " + command() ), environment() );
      shell.waitFor( "temp ok" );
      const pid_t watch = watchBelow( shell, shell.program().pid() );
      ASSERT_GT( watch, 0 );
      ASSERT_EQ( ::kill( watch, signal ), 0 );
      shell.waitFor( "it is over" );
      shell.waitUntilGone( "temp ok" );
      EXPECT_TRUE( shell.screen().isCursorShown() );
   }
}

TEST_F( WatchTerminalTest, StopsAtCtrlZAndComesBackWithFg ) {
   DrawnProgram shell( { "/bin/bash", "-c",
                         fmt::format( "set -m; stty -a > {0}/before; {1}; stty -a > {0}/stopped; "
                                      "echo it has stopped; read x; fg; echo it is over; read x",
                                      folder.path().string(), command() ) },
                       environment() );
   shell.waitFor( "temp ok" );
   shell.type( "\x1a" );
   shell.waitFor( "it has stopped" );
   EXPECT_FALSE( shell.screen().isFullScreen() );
   EXPECT_EQ( folder.read( "stopped" ), folder.read( "before" ) );
   shell.type( "\r" );
   shell.waitFor( "temp ok" );
   EXPECT_TRUE( shell.screen().isFullScreen() );
   shell.type( "q" );
   shell.waitFor( "it is over" );
}

TEST_F( WatchTerminalTest, PrintsTablesWhereItCantDrawOrIsTold ) {
   for ( const auto &[options, variable] :
         { std::pair( "--plain", "ANY=" ), std::pair( "", "TERM=dumb" ),
           std::pair( "", "TERM=of-no-kind" ) } ) {
      SCOPED_TRACE( fmt::format( "{} {}", options, variable ) );
      DrawnProgram shell( { "/bin/bash", "-c", "exec " + command( options ) },
                          environment( variable ), 80, 60 );
      shell.waitFor( "temp    temp_sensor  temperature     1.0 °C" );
      EXPECT_THAT( shell.bytes(), Not( HasSubstr( "\x1b" ) ) );
      shell.program().signal( SIGTERM );
      EXPECT_EQ( shell.wait(), 0 );
   }
}

TEST_F( WatchTerminalTest, WithoutUtf8EachSignIsALetter ) {
   DrawnProgram shell( { "/bin/bash", "-c", "exec " + command() }, environment( "LC_ALL=C" ) );
   shell.waitFor( "- TEMPERATURES" );
   shell.waitFor( "1.0 oC" );
}

TEST_F( WatchTerminalTest, WithoutAServeItFindsTheCausesItselfAndLeavesTheModulesOut ) {
   folder.write( "temp.temperature", "99" );
   DrawnProgram shell( inShell( command() ), environment(), 132, 50 );
   shell.waitFor( "!! critical   temp temperature limit: 99 °C is above the critical limit" );
   shell.waitFor( "modules: only with serve" );
}

} // namespace
