#include "StartedProgram.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

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

} // namespace

StartedProgram::StartedProgram( const std::vector<std::string> &command ) {
   int output[2], errors[2];
   if ( pipe2( output, O_CLOEXEC ) != 0 || pipe2( errors, O_CLOEXEC ) != 0 )
      throw std::runtime_error( "pipe2" );
   posix_spawn_file_actions_t actions;
   posix_spawn_file_actions_init( &actions );
   posix_spawn_file_actions_adddup2( &actions, output[1], STDOUT_FILENO );
   posix_spawn_file_actions_adddup2( &actions, errors[1], STDERR_FILENO );
   std::vector<char *> arguments;
   for ( const std::string &argument : command )
      arguments.push_back( const_cast<char *>( argument.c_str() ) );
   arguments.push_back( nullptr );
   const int error =
      posix_spawn( &pid_, command[0].c_str(), &actions, nullptr, arguments.data(), environ );
   posix_spawn_file_actions_destroy( &actions );
   close( output[1] );
   close( errors[1] );
   outputPipe_ = output[0];
   errorPipe_ = errors[0];
   if ( error != 0 )
      throw std::runtime_error( command[0] + " can't be started" );
}

StartedProgram::~StartedProgram() {
   if ( pid_ > 0 ) {
      signal( SIGKILL );
      wait();
   }
   close( outputPipe_ );
   close( errorPipe_ );
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

void StartedProgram::signal( int number ) { kill( pid_, number ); }

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
