#include "host/plugin/ChildProcess.h"

#include "host/plugin/Child.h"

#include <array>
#include <boost/asio.hpp>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace Host {
namespace {

constexpr int endWaitMs = 300; // a child that needs longer to end is killed

void check( int result, const char *what ) {
   if ( result < 0 )
      throw std::system_error( errno, std::generic_category(), what );
}

// How useful a line of standard error is: a failed assertion most, then an exception's what().
int importance( const std::string &line ) {
   if ( line.find( "Assertion `" ) != std::string::npos )
      return 3;
   if ( line.find( "what():" ) != std::string::npos )
      return 2;
   return line.empty() ? 0 : 1;
}

// The child's end of a pair. It is open here only until the child has it.
class ChildsEnd {
 public:
   explicit ChildsEnd( int descriptor ) : descriptor_( descriptor ) {}
   ~ChildsEnd() { ::close( descriptor_ ); }
   ChildsEnd( const ChildsEnd & ) = delete;
   ChildsEnd &operator=( const ChildsEnd & ) = delete;

   int descriptor() const { return descriptor_; }

 private:
   int descriptor_;
};

} // namespace

ChildProcess::ChildProcess( boost::asio::io_context &loop, Handlers handlers )
   : handlers_( std::move( handlers ) ), socket_( loop ), errors_( loop ) {
   std::array<int, 2> sockets{}, pipe{};
   check( ::socketpair( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets.data() ), "socketpair" );
   const ChildsEnd theirSocket( sockets[1] );
   socket_.assign( boost::asio::local::stream_protocol(), sockets[0] );
   check( ::pipe2( pipe.data(), O_CLOEXEC ), "pipe2" );
   const ChildsEnd theirErrors( pipe[1] );
   errors_.assign( pipe[0] );
   errors_.non_blocking( true );
   spawn( theirSocket.descriptor(), theirErrors.descriptor() );
   receive();
   receiveErrors();
}

void ChildProcess::spawn( int socket, int errors ) {
   posix_spawn_file_actions_t files;
   ::posix_spawn_file_actions_init( &files );
   ::posix_spawn_file_actions_addopen( &files, 0, "/dev/null", O_RDONLY, 0 );
   ::posix_spawn_file_actions_adddup2( &files, errors, 1 );
   ::posix_spawn_file_actions_adddup2( &files, errors, 2 );
   ::posix_spawn_file_actions_adddup2( &files, socket, childSocket );
   ::posix_spawn_file_actions_adddup2( &files, page_.descriptor(), childPage );
   // A client's connection ends when its last descriptor is closed: the child must not have one.
   ::posix_spawn_file_actions_addclosefrom_np( &files, childPage + 1 );
   posix_spawnattr_t attributes;
   ::posix_spawnattr_init( &attributes );
   // A group of its own, so that Ctrl-C on the terminal reaches the parent only.
   ::posix_spawnattr_setflags( &attributes, POSIX_SPAWN_SETPGROUP );
   std::string name = "orbis-host", command = "child";
   std::array<char *, 3> arguments{ name.data(), command.data(), nullptr };
   const int failure =
      ::posix_spawn( &process_, "/proc/self/exe", &files, &attributes, arguments.data(), environ );
   ::posix_spawn_file_actions_destroy( &files );
   ::posix_spawnattr_destroy( &attributes );
   if ( failure )
      throw std::system_error( failure, std::generic_category(), "posix_spawn" );
}

ChildProcess::~ChildProcess() {
   *alive_ = false;
   if ( process_ < 0 )
      return;
   boost::system::error_code ignored;
   socket_.shutdown( boost::asio::socket_base::shutdown_both, ignored );
   // The other end of the pipe closes when the child ends.
   pollfd pipe{ errors_.native_handle(), 0, 0 };
   if ( ::poll( &pipe, 1, endWaitMs ) != 1 )
      kill();
   ::waitpid( process_, nullptr, 0 );
}

void ChildProcess::send( const Command &command ) {
   boost::system::error_code ignored; // receive() notices when the child ended
   boost::asio::write( socket_, boost::asio::buffer( encode( command ) ), ignored );
}

void ChildProcess::kill() const {
   if ( process_ > 0 ) // kill() takes 0 and -1 for many processes
      ::kill( process_, SIGKILL );
}

void ChildProcess::receive() {
   socket_.async_read_some(
      boost::asio::buffer( chunk_ ),
      [this, alive = alive_]( const boost::system::error_code &failure, size_t length ) {
         if ( !*alive )
            return;
         if ( failure ) {
            ended();
            return;
         }
         input_.append( { chunk_.data(), length } );
         if ( handleInput() )
            receive();
      } );
}

// Passes on the messages received so far. False when this object or the child ended meanwhile.
bool ChildProcess::handleInput() {
   const auto alive = alive_;
   while ( *alive ) {
      std::optional<Event> event;
      try {
         const auto message = input_.next();
         if ( !message )
            return true;
         event = decodeEvent( *message );
      } catch ( const std::runtime_error & ) {
      }
      if ( !event ) {
         sentNonsense_ = true;
         ended();
         return false;
      }
      handlers_.event( *event );
   }
   return false;
}

void ChildProcess::receiveErrors() {
   errors_.async_wait( errors_.wait_read,
                       [this, alive = alive_]( const boost::system::error_code &failure ) {
                          if ( *alive && !failure && drainErrors() )
                             receiveErrors();
                       } );
}

// Reads the child's standard error as far as it is there. False at its end.
bool ChildProcess::drainErrors() {
   boost::system::error_code failure;
   std::array<char, 4096> chunk{};
   while ( const size_t length = errors_.read_some( boost::asio::buffer( chunk ), failure ) )
      errorInput_.append( chunk.data(), length );
   for ( size_t end; ( end = errorInput_.find( '\n' ) ) != std::string::npos; ) {
      handleErrorLine( errorInput_.substr( 0, end ) );
      errorInput_.erase( 0, end + 1 );
   }
   return failure == boost::asio::error::would_block;
}

void ChildProcess::handleErrorLine( std::string line ) {
   if ( line.starts_with( "orbis-host: " ) ) // assert() prints the program's name first
      line.erase( 0, std::strlen( "orbis-host: " ) );
   handlers_.errorLine( line );
   if ( importance( line ) >= importance( bestErrorLine_ ) )
      bestErrorLine_ = std::move( line );
}

void ChildProcess::ended() {
   kill(); // harmless when the child is dead already
   int waitStatus = 0;
   ::waitpid( process_, &waitStatus, 0 );
   process_ = -1;
   drainErrors();
   if ( !errorInput_.empty() )
      handleErrorLine( errorInput_ );
   handleUnsent();
   const auto died = std::move( handlers_.died ); // the handler may delete this object
   died( causeOfDeath( waitStatus ) );
}

// What the child said before it died and did not send. A plug-in that went wrong may have
// overwritten it; what can't be read is left out then.
void ChildProcess::handleUnsent() {
   FrameBuffer unsent;
   unsent.append( page_.unsent() );
   try {
      while ( const auto message = unsent.next() )
         if ( const auto event = decodeEvent( *message ) )
            handlers_.event( *event );
   } catch ( const std::runtime_error & ) {
   }
}

std::string ChildProcess::causeOfDeath( int waitStatus ) const {
   if ( sentNonsense_ )
      return "the plug-in's process sent a message that can't be read";
   std::string how = WIFSIGNALED( waitStatus )
                        ? fmt::format( "ended by signal {} ({})", WTERMSIG( waitStatus ),
                                       ::strsignal( WTERMSIG( waitStatus ) ) )
                        : fmt::format( "ended with exit code {}", WEXITSTATUS( waitStatus ) );
   if ( importance( bestErrorLine_ ) > 1 )
      return bestErrorLine_;
   if ( input_.hasRest() )
      how += " in the middle of a message";
   return bestErrorLine_.empty() ? how : fmt::format( "{}: {}", how, bestErrorLine_ );
}

} // namespace Host
