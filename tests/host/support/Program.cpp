#include "support/Program.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fmt/format.h>
#include <fstream>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr auto patience = std::chrono::seconds( 20 );
constexpr auto glance = std::chrono::milliseconds( 5 );

void openAs( const std::filesystem::path &path, int descriptor ) {
   ::dup2( ::open( path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0600 ), descriptor );
}

} // namespace

Program::Program( const TempFolder &folder, const std::vector<std::string> &arguments,
                  Output output )
   : folder_( folder ) {
   start( arguments, output, folder.path() / "host.sock" );
}

Program::Program( const TempFolder &folder, const std::vector<std::string> &arguments,
                  const Program &serve )
   : folder_( folder ) {
   start( arguments, Output::Files, serve.folder_.path() / "host.sock" );
}

void Program::start( const std::vector<std::string> &arguments, Output output,
                     const std::filesystem::path &socket ) {
   folder_.remove( "out.txt" ); // from an earlier run
   folder_.remove( "err.txt" );
   std::vector<std::string> words{ "orbis-host", "--plugin", SCRIPTED_PLUGIN, "--drivers",
                                   SCRIPTED_BOARD "/libScriptedPlugin.drivers.json" };
   words.insert( words.end(), arguments.begin(), arguments.end() );
   std::vector<char *> argv;
   for ( std::string &word : words )
      argv.push_back( word.data() );
   argv.push_back( nullptr );
   winsize size{ .ws_row = 30, .ws_col = 120, .ws_xpixel = 0, .ws_ypixel = 0 };
   process_ =
      output == Output::Terminal ? ::forkpty( &terminal_, nullptr, nullptr, &size ) : ::fork();
   if ( process_ != 0 )
      return;
   ::setenv( "SCRIPT", folder_.path().c_str(), 1 );
   ::setenv( "ORBIS_HOST_SOCKET", socket.c_str(), 1 );
   if ( output == Output::Files ) {
      openAs( folder_.path() / "out.txt", STDOUT_FILENO );
      openAs( folder_.path() / "err.txt", STDERR_FILENO );
   }
   ::execv( ORBIS_HOST, argv.data() );
   std::_Exit( 127 );
}

Program::~Program() {
   if ( process_ > 0 ) {
      signal( SIGKILL );
      exitCode();
   }
   if ( terminal_ >= 0 )
      ::close( terminal_ );
}

int Program::exitCode() {
   int status = 0;
   ::waitpid( process_, &status, 0 );
   process_ = -1;
   return WIFEXITED( status ) ? WEXITSTATUS( status ) : 128 + WTERMSIG( status );
}

void Program::signal( int number ) const {
   ASSERT_GT( process_, 0 ); // kill() takes 0 and -1 for many processes
   ::kill( process_, number );
}

void Program::type( const std::string &keys ) const {
   EXPECT_EQ( ::write( terminal_, keys.data(), keys.size() ), std::ssize( keys ) );
}

std::string Program::waitForScreen( const std::string &text ) {
   const auto end = std::chrono::steady_clock::now() + patience;
   std::string seen;
   while ( seen.find( text ) == std::string::npos && std::chrono::steady_clock::now() < end ) {
      pollfd screen{ terminal_, POLLIN, 0 };
      ::poll( &screen, 1, 100 );
      std::array<char, 4096> buffer{};
      if ( !( screen.revents & ( POLLIN | POLLHUP ) ) )
         continue;
      const ssize_t length = ::read( terminal_, buffer.data(), buffer.size() );
      if ( length <= 0 )
         break;
      seen.append( buffer.data(), static_cast<size_t>( length ) );
   }
   EXPECT_NE( seen.find( text ), std::string::npos ) << "no \"" << text << "\" in\n" << seen;
   return seen;
}

size_t Program::waitFor( const std::string &file, const std::string &text, size_t start ) const {
   const auto end = std::chrono::steady_clock::now() + patience;
   while ( std::chrono::steady_clock::now() < end ) {
      const size_t found = folder_.read( file ).find( text, start );
      if ( found != std::string::npos )
         return found + text.size();
      std::this_thread::sleep_for( glance );
   }
   ADD_FAILURE() << "no \"" << text << "\" in " << file << ":\n" << folder_.read( file );
   return start;
}

pid_t Program::child() const {
   std::ifstream children( fmt::format( "/proc/{0}/task/{0}/children", process_ ) );
   pid_t child = -1;
   return children >> child ? child : -1;
}
