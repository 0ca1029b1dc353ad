#include "sockets/SocketFile.h"

#include "sockets/Credentials.h"

#include <fmt/format.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <thread>
#include <utility>

namespace Sockets {

namespace {

constexpr mode_t socketMode = 0660;
constexpr int backlog = 128;

void require( bool success, const std::string &path, const char *what ) {
   if ( !success )
      throw std::runtime_error( fmt::format( "{}: {}: {}", path, what, std::strerror( errno ) ) );
}

sockaddr_un addressOf( const std::string &path ) {
   sockaddr_un address{};
   address.sun_family = AF_UNIX;
   if ( path.empty() || path.size() >= sizeof address.sun_path )
      throw std::runtime_error(
         fmt::format( "{}: the path of a socket must have 1 to {} characters", path,
                      sizeof address.sun_path - 1 ) );
   path.copy( address.sun_path, path.size() );
   return address;
}

int newSocket( int flags = 0 ) { return socket( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | flags, 0 ); }

struct Answer {
   int error;         // an errno value, or 0
   pid_t process = 0; // that listens; 0: unknown
};

Answer connectTo( const std::string &path ) {
   const sockaddr_un address = addressOf( path );
   const int fd = newSocket( SOCK_NONBLOCK );
   Answer answer{ 0 };
   if ( connect( fd, reinterpret_cast<const sockaddr *>( &address ), sizeof address ) != 0 )
      answer.error = errno;
   ucred listener{};
   socklen_t size = sizeof listener;
   if ( answer.error == 0 && getsockopt( fd, SOL_SOCKET, SO_PEERCRED, &listener, &size ) == 0 )
      answer.process = listener.pid;
   close( fd );
   return answer;
}

// Locks the socket's folder, which leaves no file behind. If the folder can't be locked, goes on
// without: then the system will say what is wrong with it.
class StartLock {
 public:
   explicit StartLock( const std::string &path )
      : fd_( open( folderOf( path ).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC ) ) {
      // A start takes milliseconds. Another program that holds the lock for longer is no server.
      for ( int tries = 0; fd_ >= 0 && flock( fd_, LOCK_EX | LOCK_NB ) != 0 && tries < 200;
            ++tries )
         std::this_thread::sleep_for( std::chrono::milliseconds( 10 ) );
   }
   ~StartLock() {
      if ( fd_ >= 0 )
         close( fd_ );
   }
   StartLock( const StartLock & ) = delete;
   StartLock &operator=( const StartLock & ) = delete;

 private:
   static std::string folderOf( const std::string &path ) {
      const std::string folder = std::filesystem::path( path ).parent_path();
      return folder.empty() ? "." : folder;
   }
   const int fd_;
};

} // namespace

int tryToConnect( const std::string &path ) { return connectTo( path ).error; }

SocketFile::SocketFile( const std::string &path, const std::string &group ) : path_( path ) {
   // Of servers that start together, one at a time looks for another and takes its place.
   const StartLock lock( path );
   removeStaleFile();
   fd_ = newSocket();
   try {
      startListening( group );
   } catch ( ... ) {
      close( fd_ );
      throw;
   }
}

void SocketFile::removeStaleFile() const {
   struct stat status;
   if ( lstat( path_.c_str(), &status ) != 0 )
      return;
   if ( !S_ISSOCK( status.st_mode ) )
      throw std::runtime_error( path_ + ": not a socket" );
   const Answer answer = connectTo( path_ );
   if ( answer.error == 0 || answer.error == EAGAIN )
      throw std::runtime_error(
         fmt::format( "{}: another server is running{}; stop it first, or use another path", path_,
                      answer.process > 0 ? fmt::format( ", process {}", answer.process ) : "" ) );
   if ( answer.error == ECONNREFUSED )
      unlink( path_.c_str() );
}

void SocketFile::startListening( const std::string &group ) {
   const sockaddr_un address = addressOf( path_ );
   // The file gets the socket's mode less the umask, so it is never open to others.
   fchmod( fd_, socketMode );
   require( bind( fd_, reinterpret_cast<const sockaddr *>( &address ), sizeof address ) == 0, path_,
            "bind failed" );
   struct stat status;
   require( stat( path_.c_str(), &status ) == 0, path_, "stat failed" );
   device_ = status.st_dev;
   inode_ = status.st_ino;
   try {
      if ( !group.empty() )
         require( chown( path_.c_str(), static_cast<uid_t>( -1 ), groupNamed( group ) ) == 0, path_,
                  "chown failed" );
      require( chmod( path_.c_str(), socketMode ) == 0, path_, "chmod failed" );
      require( listen( fd_, backlog ) == 0, path_, "listen failed" );
   } catch ( ... ) {
      unlink( path_.c_str() );
      throw;
   }
}

SocketFile::~SocketFile() {
   if ( fd_ >= 0 )
      close( fd_ );
   struct stat status;
   if ( stat( path_.c_str(), &status ) == 0 && status.st_dev == device_ && status.st_ino == inode_ )
      unlink( path_.c_str() );
}

int SocketFile::release() { return std::exchange( fd_, -1 ); }

} // namespace Sockets
