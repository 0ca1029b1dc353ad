#pragma once

#include "host/HealthReport.h"
#include "host/State.h"
#include "host/serve/Why.h"
#include "host/session/CageModule.h"

#include <boost/asio/io_context.hpp>
#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Host {

// The Unix socket of `serve`: ORBIS_HOST_SOCKET, or /run/orbis/host.sock when that is not set.
std::filesystem::path serveSocket();

// Where serve keeps its events without another word: beside its socket, "/run/orbis/host.events".
std::filesystem::path serveEvents();

// The name of a board for `serve` and its clients: its folder, without symbolic links.
std::string serveName( const std::filesystem::path &board );

// The client of a running `serve`. Every call opens a new connection, so a failed call does not
// affect the next.
class Client {
 public:
   explicit Client( std::filesystem::path socket ) : socket_( std::move( socket ) ) {}

   // The `serve` of a board. Nothing when none is running, or when it serves another board.
   static std::optional<Client> ofBoard( const std::filesystem::path &folder );

   // The objects of the served board, and its name in `board`. Nothing without an answer.
   std::optional<BoardReport> report( std::string *board = nullptr ) const;

   // What is wrong with the served board. Nothing without an answer.
   std::optional<HealthReport> health() const;

   // All that is known of one object. Nothing without an answer.
   std::optional<Why> why( const std::string &object ) const;

   // The module in a cage, and all modules. Nothing without an answer.
   std::optional<CageModule> module( const std::string &cage ) const;
   std::optional<std::vector<CageModule>> modules() const;

   // Has an object do something, and returns the result. The limit is longer than the server's own.
   Reading act( const std::string &object, const std::vector<std::string> &words,
                std::chrono::milliseconds limit = std::chrono::seconds( 65 ) ) const;

   const std::filesystem::path &socket() const { return socket_; }

   // Asks without waiting. `answer` is called once, on the loop, with the body; with nothing when
   // it does not come within the limit of the calls above.
   using Answer = std::function<void( std::optional<std::string> )>;
   void ask( boost::asio::io_context &loop, const std::string &path, Answer answer ) const;

   // The body of the answer. Nothing when it does not come within `limit`.
   std::optional<std::string> call( bool isPost, const std::string &path, const std::string &body,
                                    std::chrono::milliseconds limit ) const;

 private:
   std::filesystem::path socket_;
};

} // namespace Host
