#pragma once

#include <sys/types.h>

#include <string>

namespace Sockets {

// Connects to a Unix stream socket and disconnects again, without waiting. Returns 0 or an errno
// value; EAGAIN means that the server's backlog is full.
int tryToConnect( const std::string &path );

// A listening Unix stream socket and its file. Replaces the file of a server that has died.
class SocketFile {
 public:
   // The file has mode 0660 and belongs to the group, unless that is empty. Throws
   // std::runtime_error: another server is running (and which), the file is not a socket, there is
   // no such group, or the system's reason.
   SocketFile( const std::string &path, const std::string &group );
   // Removes the file, unless another one has taken its place.
   ~SocketFile();
   SocketFile( const SocketFile & ) = delete;
   SocketFile &operator=( const SocketFile & ) = delete;

   const std::string &path() const { return path_; }
   // The listening descriptor. The caller closes it.
   int release();

 private:
   void removeStaleFile() const;
   void startListening( const std::string &group );

   const std::string path_;
   int fd_ = -1;
   dev_t device_ = 0;
   ino_t inode_ = 0;
};

} // namespace Sockets
