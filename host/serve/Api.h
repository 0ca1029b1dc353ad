#pragma once

#include "boardfiles/Board.h"
#include "host/HealthReport.h"
#include "host/State.h"
#include "host/journal/Journal.h"
#include "host/plugin/Action.h"
#include "host/serve/Why.h"
#include "host/session/CageModule.h"

#include <functional>
#include <optional>
#include <string>

namespace Host {

class Events;

// Answers the HTTP requests of docs/openapi.json. Has no sockets of its own.
class Api {
 public:
   struct Request {
      std::string method{}; // "GET"
      std::string path{};   // without query
      std::string body{};
      std::string query{};       // behind the question mark
      bool wantsStream = false;  // of events
      std::string lastEventId{}; // the header Last-Event-ID
   };
   struct Response {
      unsigned status = 200;
      std::string json{};
      std::string allow{};                    // the right method, when the request has another one
      std::optional<Journal::Query> stream{}; // in place of the JSON: such events as they come
   };
   using Reply = std::function<void( const Response & )>;

   // Gives the answers' content.
   struct Source {
      std::function<BoardReport()> report{};
      std::function<ObjectReport( size_t object )> object{}; // with its last readings
      std::function<HealthReport()> health{};
      std::function<std::vector<CageModule>()> modules{};
      // Calls back once, now or later.
      std::function<void( size_t object, std::function<void( const Why & )> )> why{};
      std::function<void( size_t object, const Action &, std::function<void( const Reading & )> )>
         ask{};
      // Calls back with JSON, or with the reason why there is none.
      std::function<void( std::function<void( std::string json, std::string error )> )> busses{};
      Events *events = nullptr; // outlives the Api
   };

   // `name` is the board's name for clients: its folder.
   Api( const BoardFiles::Board &board, std::string name, Source source );

   // Calls `reply` once: now, or when an action has ended.
   void handle( const Request &request, const Reply &reply ) const;

   Events &events() const { return *source_.events; }

 private:
   void handleObject( const Request &request, const std::string &rest, const Reply &reply ) const;
   Response moduleIn( const std::string &cage ) const;
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

// An answer with an error: {"error": "..."}.
Api::Response errorResponse( unsigned status, std::string_view words );

} // namespace Host
