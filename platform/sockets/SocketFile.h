#pragma once

#include <sys/types.h>

#include <string>

namespace Sockets {

// A listening Unix stream socket and its file. The file of a server that is dead is replaced.
class SocketFile {
 public:
   // Mode 0660, of the named group unless that is empty. Throws std::runtime_error: a server
   // lives there, something that is no socket is there, no such group, or the system's reason.
   SocketFile( const std::string &path, const std::string &group );
   // Removes the file, unless another has been put in its place.
   ~SocketFile();
   SocketFile( const SocketFile & ) = delete;
   SocketFile &operator=( const SocketFile & ) = delete;

   const std::string &path() const { return path_; }
   // The listening descriptor; closing it is up to the caller now.
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
