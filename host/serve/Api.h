#pragma once

#include "boardfiles/Board.h"
#include "host/State.h"
#include "host/plugin/Action.h"

#include <functional>
#include <string>

namespace Host {

// What a board that is served answers to HTTP requests, told in docs/openapi.json. Knows no
// sockets.
class Api {
 public:
   struct Request {
      std::string method{}; // "GET"
      std::string path{};   // as it was sent, without query
      std::string body{};
   };
   struct Response {
      unsigned status = 200;
      std::string json{};
      std::string allow{}; // the methods of a path, where the request's is none of them
   };
   using Reply = std::function<void( const Response & )>;

   // Where the answers come from.
   struct Source {
      std::function<BoardReport()> report{};
      std::function<void( size_t object, const Action &, std::function<void( const Reading & )> )>
         ask{};
   };

   // `name` is what the board is called to clients: its folder.
   Api( const BoardFiles::Board &board, std::string name, Source source );

   // Calls `reply` once, now or when an object has done what it was asked.
   void handle( const Request &request, const Reply &reply ) const;

 private:
   void handleObject( const Request &request, const std::string &rest, const Reply &reply ) const;
   void handleAction( const Request &request, size_t object, const Reply &reply ) const;

   const BoardFiles::Board &board_;
   const std::string name_;
   const Source source_;
};

// The status codes of the answers (RFC 9110, RFC 6585).
namespace HttpStatus {
constexpr unsigned ok = 200, badRequest = 400, notFound = 404, methodNotAllowed = 405,
                   contentTooLarge = 413, headerTooLarge = 431, notImplemented = 501,
                   badGateway = 502, unavailable = 503, timedOut = 504;
} // namespace HttpStatus

// An answer that says what is wrong, as {"error": "..."}.
Api::Response errorResponse( unsigned status, std::string_view words );

} // namespace Host
