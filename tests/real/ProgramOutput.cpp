#include "ProgramOutput.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace RealTest {

std::string outputOf( const std::vector<std::string> &command ) {
   std::vector<char *> arguments;
   for ( const std::string &word : command )
      arguments.push_back( const_cast<char *>( word.c_str() ) );
   arguments.push_back( nullptr );
   int ends[2];
   if ( pipe2( ends, O_CLOEXEC ) != 0 )
      return {};
   posix_spawn_file_actions_t actions;
   posix_spawn_file_actions_init( &actions );
   posix_spawn_file_actions_adddup2( &actions, ends[1], STDOUT_FILENO );
   pid_t child = 0;
   // Unlike fork, it copies no page tables of this process.
   const int error =
      posix_spawn( &child, arguments[0], &actions, nullptr, arguments.data(), environ );
   posix_spawn_file_actions_destroy( &actions );
   close( ends[1] );
   std::string text;
   char chunk[4096];
   ssize_t count = 0;
   while ( ( count = read( ends[0], chunk, sizeof chunk ) ) > 0 )
      text.append( chunk, static_cast<size_t>( count ) );
   close( ends[0] );
   int status = 0;
   if ( error != 0 || waitpid( child, &status, 0 ) < 0 || status != 0 )
      return {};
   return text;
}

} // namespace RealTest
