#include "screen/Rescue.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace Screen {
namespace {

constexpr std::array crashes{ SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL, SIGQUIT };

// What a signal handler may use: no allocation, no lock.
struct Known {
   int terminal = -1;
   int told = -1; // the pipe to the waiting process
   termios before{};
   termios during{};
   std::array<char, 256> leave{};
   size_t size = 0;
   std::array<struct sigaction, crashes.size()> others{};
};
Known known;

void leaveScreen() {
   [[maybe_unused]] const ssize_t written =
      ::write( known.terminal, known.leave.data(), known.size );
}

void tellThatAllIsDone() {
   const char done = 1;
   [[maybe_unused]] const ssize_t written = ::write( known.told, &done, 1 );
}

// What this signal does without us comes after it.
void crashed( int signal ) {
   ::tcsetattr( known.terminal, TCSANOW, &known.before );
   leaveScreen();
   tellThatAllIsDone();
   for ( size_t i = 0; i < crashes.size(); ++i )
      ::sigaction( crashes[i], &known.others[i], nullptr );
   ::raise( signal );
}

bool isAlike( const termios &one, const termios &other ) {
   return one.c_iflag == other.c_iflag && one.c_oflag == other.c_oflag &&
          one.c_lflag == other.c_lflag;
}

void closeAllBut( int one, int other ) {
   const auto [low, high] = std::minmax( one, other );
   const auto closeFrom = [begin = 0u]( int kept ) mutable {
      const unsigned next = static_cast<unsigned>( kept );
      if ( next > begin )
         ::close_range( begin, next - 1, 0 );
      begin = next + 1;
   };
   auto closing = closeFrom;
   closing( low );
   closing( high );
   ::close_range( static_cast<unsigned>( high ) + 1, ~0u, 0 );
}

// The waiting process. The pipe ends without a byte when the other one could say nothing.
[[noreturn]] void waitForTheEnd( int pipe ) {
   // Keys at the terminal are for the other one; and setting the terminal must not stop this one.
   for ( const int signal : { SIGINT, SIGQUIT, SIGTSTP, SIGTTOU, SIGPIPE } )
      ::signal( signal, SIG_IGN );
   for ( const int signal : { SIGTERM, SIGHUP, SIGWINCH, SIGCONT, SIGSEGV, SIGABRT } )
      ::signal( signal, SIG_DFL );
   closeAllBut( known.terminal, pipe );
   char byte = 0;
   ssize_t got = 0;
   do
      got = ::read( pipe, &byte, 1 );
   while ( got < 0 && errno == EINTR );
   if ( got == 0 ) {
      // A shell that was faster has set what it needs itself.
      termios now{};
      if ( ::tcgetattr( known.terminal, &now ) == 0 && isAlike( now, known.during ) )
         ::tcsetattr( known.terminal, TCSANOW, &known.before );
      leaveScreen();
   }
   ::_exit( 0 );
}

} // namespace

Rescue::Rescue( int terminal, const termios &before, const std::string &leave ) {
   known.terminal = terminal;
   known.before = before;
   ::tcgetattr( terminal, &known.during );
   known.size = std::min( leave.size(), known.leave.size() );
   std::memcpy( known.leave.data(), leave.data(), known.size );
   std::array<int, 2> ends{ -1, -1 };
   if ( ::pipe2( ends.data(), O_CLOEXEC ) == 0 ) {
      waiting_ = ::fork();
      if ( waiting_ == 0 )
         waitForTheEnd( ends[0] );
      ::close( ends[0] );
      known.told = ends[1];
   }
   struct sigaction action {};
   action.sa_handler = crashed;
   for ( size_t i = 0; i < crashes.size(); ++i )
      ::sigaction( crashes[i], &action, &known.others[i] );
}

Rescue::~Rescue() {
   for ( size_t i = 0; i < crashes.size(); ++i )
      ::sigaction( crashes[i], &known.others[i], nullptr );
   tellThatAllIsDone();
   ::close( std::exchange( known.told, -1 ) );
   if ( waiting_ > 0 )
      ::waitpid( waiting_, nullptr, 0 );
}

} // namespace Screen
