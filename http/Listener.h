#pragma once

#include "sockets/SocketFile.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace Http {

// A listening socket: a Unix one with its file, or a TCP one.
class Listener {
 public:
   // Replaces the socket of a server that is dead. Throws std::runtime_error when another server is
   // running there, when the path is not a socket, or when the system refuses.
   static Listener atFile( const std::filesystem::path &path );
   // "127.0.0.1:8080", "[::1]:8080" or "localhost:8080"; the port 0 is any free one. Throws
   // std::runtime_error: it is no such address, it is not this machine's own while that is not
   // `anyAddress`, or the system's reason.
   static Listener atAddress( const std::string &address, bool anyAddress );
   // Those that the system's manager has opened for this process (sd_listen_fds). Throws
   // std::runtime_error for one that isn't a listening stream socket.
   static std::vector<Listener> given();

   // "/run/orbis/host.sock", "127.0.0.1:8080".
   const std::string &name() const { return name_; }
   // AF_UNIX, AF_INET or AF_INET6.
   int family() const { return family_; }
   bool isLocal() const;
   // The descriptor, which the caller closes. The file stays as long as this object.
   int release();

   Listener( Listener &&other ) noexcept;
   ~Listener();

 private:
   Listener( std::string name, int family, int fd );

   std::string name_;
   int family_;
   int fd_ = -1;
   std::unique_ptr<Sockets::SocketFile> file_{};
};

} // namespace Http
