#include "StartedProgram.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utmp.h>

#include <chrono>
#include <csignal>
#include <stdexcept>

namespace TestSupport {

namespace {

// False at the end.
bool readSome( int fd, std::string &text ) {
   char chunk[4096];
   const ssize_t count = read( fd, chunk, sizeof chunk );
   if ( count > 0 )
      text.append( chunk, static_cast<size_t>( count ) );
   return count > 0;
}

// For exec, which wants pointers that end with null.
std::vector<char *> pointersTo( const std::vector<std::string> &texts ) {
   std::vector<char *> pointers;
   for ( const std::string &text : texts )
      pointers.push_back( const_cast<char *>( text.c_str() ) );
   pointers.push_back( nullptr );
   return pointers;
}

std::string nameIn( const std::string &assignment ) {
   return assignment.substr( 0, assignment.find( '=' ) );
}

std::vector<std::string> environmentWith( std::vector<std::string> changes ) {
   for ( char **each = environ; *each; ++each ) {
      bool isChanged = false;
      for ( const std::string &change : changes )
         isChanged |= nameIn( change ) == nameIn( *each );
      if ( !isChanged )
         changes.emplace_back( *each );
   }
   return changes;
}

int openedFile( const std::string &path, int flags ) {
   const int fd = open( path.c_str(), flags | O_CLOEXEC, 0600 );
   if ( fd < 0 )
      throw std::runtime_error( path + " can't be opened" );
   return fd;
}

// The program's end: the file, or a pipe whose other end goes to `ours`.
int outputTo( const std::string &path, int &ours ) {
   if ( !path.empty() )
      return openedFile( path, O_WRONLY | O_CREAT | O_TRUNC | O_APPEND );
   int ends[2];
   if ( pipe2( ends, O_CLOEXEC ) != 0 )
      throw std::runtime_error( "pipe2" );
   ours = ends[0];
   return ends[1];
}

} // namespace

StartedProgram::StartedProgram( const std::vector<std::string> &command,
                                const ProgramSettings &settings ) {
   if ( access( command[0].c_str(), X_OK ) != 0 )
      throw std::runtime_error( command[0] + " can't be started" );
   int input = -1, output = -1, errors = -1;
   if ( settings.onTerminal ) {
      const winsize size{ .ws_row = static_cast<unsigned short>( settings.rows ),
                          .ws_col = static_cast<unsigned short>( settings.columns ),
                          .ws_xpixel = 0,
                          .ws_ypixel = 0 };
      if ( openpty( &terminal_, &input, nullptr, nullptr, &size ) != 0 )
         throw std::runtime_error( "openpty" );
      fcntl( terminal_, F_SETFD, FD_CLOEXEC );
   } else {
      input = openedFile( "/dev/null", O_RDONLY );
      output = outputTo( settings.outputFile, outputPipe_ );
      errors = outputTo( settings.errorFile, errorPipe_ );
   }
   const std::vector<std::string> environment = environmentWith( settings.environment );
   const std::vector<char *> arguments = pointersTo( command );
   const std::vector<char *> variables = pointersTo( environment );
   pid_ = fork();
   if ( pid_ == 0 ) {
      if ( settings.onTerminal ) {
         login_tty( input );
      } else {
         dup2( input, STDIN_FILENO );
         dup2( output, STDOUT_FILENO );
         dup2( errors, STDERR_FILENO );
      }
      execve( arguments[0], arguments.data(), variables.data() );
      _exit( 127 );
   }
   for ( const int fd : { input, output, errors } ) {
      if ( fd >= 0 )
         close( fd );
   }
   if ( pid_ < 0 )
      throw std::runtime_error( "fork" );
}

StartedProgram::~StartedProgram() {
   if ( pid_ > 0 ) {
      signal( SIGKILL );
      wait();
   }
   for ( const int fd : { outputPipe_, errorPipe_, terminal_ } ) {
      if ( fd >= 0 )
         close( fd );
   }
}

bool StartedProgram::waitForError( const std::string &words ) {
   while ( errors_.find( words ) == errors_.npos ) {
      if ( !readSome( errorPipe_, errors_ ) )
         return false;
   }
   return true;
}

bool StartedProgram::hasOutput() const {
   pollfd output{ outputPipe_, POLLIN, 0 };
   return poll( &output, 1, 0 ) == 1 && output.revents & POLLIN;
}

void StartedProgram::type( const std::string &keys ) const {
   EXPECT_EQ( write( terminal_, keys.data(), keys.size() ), std::ssize( keys ) );
}

std::string StartedProgram::waitForScreen( const std::string &text ) {
   const auto end = std::chrono::steady_clock::now() + std::chrono::seconds( 20 );
   std::string seen;
   while ( seen.find( text ) == seen.npos && std::chrono::steady_clock::now() < end ) {
      pollfd screen{ terminal_, POLLIN, 0 };
      poll( &screen, 1, 100 );
      if ( screen.revents & ( POLLIN | POLLHUP ) && !readSome( terminal_, seen ) )
         break;
   }
   EXPECT_NE( seen.find( text ), seen.npos ) << "no \"" << text << "\" in\n" << seen;
   return seen;
}

void StartedProgram::signal( int number ) const {
   ASSERT_GT( pid_, 0 ); // kill() takes 0 and -1 for many processes
   kill( pid_, number );
}

int StartedProgram::wait() {
   while ( readSome( outputPipe_, output_ ) ) {
   }
   while ( readSome( errorPipe_, errors_ ) ) {
   }
   int status = 0;
   waitpid( pid_, &status, 0 );
   pid_ = -1;
   return WIFEXITED( status ) ? WEXITSTATUS( status ) : -WTERMSIG( status );
}

} // namespace TestSupport
