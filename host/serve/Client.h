#pragma once

#include "host/State.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace Host {

// The Unix socket of `serve`: ORBIS_HOST_SOCKET, or /run/orbis/host.sock where that is unset or
// empty.
std::filesystem::path serveSocket();

// The name of a board for `serve` and its clients: its folder, without symbolic links.
std::string serveName( const std::filesystem::path &board );

// A running `serve` as other commands use it. Every call is a connection of its own, so that one
// that failed harms no other.
class Client {
 public:
   explicit Client( std::filesystem::path socket ) : socket_( std::move( socket ) ) {}

   // The `serve` of a board; nothing when there is none, or it is another board's.
   static std::optional<Client> ofBoard( const std::filesystem::path &folder );

   // The board that is served, and what is known of it; nothing when nobody answers.
   std::optional<BoardReport> report( std::string *board = nullptr ) const;

   // Has an object do something; how that ended.
   Reading act( const std::string &object, const std::vector<std::string> &words ) const;

   const std::filesystem::path &socket() const { return socket_; }

 private:
   // The body of the answer; nothing when there is none in time.
   std::optional<std::string> call( bool isPost, const std::string &path, const std::string &body,
                                    std::chrono::milliseconds limit ) const;

   std::filesystem::path socket_;
};

} // namespace Host
