#pragma once

#include "boardfiles/Board.h"
#include "history/Store.h"
#include "host/HealthReport.h"
#include "host/State.h"
#include "host/journal/Journal.h"
#include "host/plugin/Action.h"
#include "host/serve/Why.h"
#include "host/session/CageModule.h"
#include "http/Exchange.h"
#include "metrics/Format.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace Host {

class Events;

// Answers the HTTP requests of docs/openapi.json. Has no sockets of its own.
class Api {
 public:
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
      // Calls back with the metrics in this format, soon.
      std::function<void( Metrics::Format, std::function<void( std::string text )> )> metrics{};
      std::function<std::shared_ptr<Http::Stream>()> live{}; // for one page
      std::function<std::string()> fault{}; // why the board isn't read; empty: it is
      Events *events = nullptr;             // outlives the Api, as the next
      const History::Store *history = nullptr;
   };

   // `name` is the board's name for clients: its folder.
   Api( const BoardFiles::Board &board, std::string name, Source source );

   // Calls `reply` once: now, or when an action has ended.
   void handle( const Http::Request &request, const Http::Reply &reply ) const;

 private:
   // Who answers a path. Its method is GET, or POST.
   struct Route {
      std::string_view path; // its beginning, where it ends with a slash and has more than that
      std::string_view method;
      void ( Api::*answer )( const Http::Request &, const Http::Reply & ) const;
   };
   static const Route routes[];

   void givePage( const Http::Request &request, const Http::Reply &reply ) const;
   void giveHealthz( const Http::Request &, const Http::Reply &reply ) const;
   void giveBoard( const Http::Request &, const Http::Reply &reply ) const;
   void giveObjects( const Http::Request &, const Http::Reply &reply ) const;
   void giveHealth( const Http::Request &, const Http::Reply &reply ) const;
   void giveModules( const Http::Request &, const Http::Reply &reply ) const;
   void giveModule( const Http::Request &request, const Http::Reply &reply ) const;
   void givePanel( const Http::Request &, const Http::Reply &reply ) const;
   void giveTopology( const Http::Request &, const Http::Reply &reply ) const;
   void giveWiring( const Http::Request &, const Http::Reply &reply ) const;
   void giveBusses( const Http::Request &, const Http::Reply &reply ) const;
   void giveLive( const Http::Request &, const Http::Reply &reply ) const;
   void giveMetrics( const Http::Request &request, const Http::Reply &reply ) const;
   void giveHistory( const Http::Request &request, const Http::Reply &reply ) const;
   void giveEvents( const Http::Request &request, const Http::Reply &reply ) const;
   void acknowledge( const Http::Request &request, const Http::Reply &reply ) const;
   void giveDocument( const Http::Request &, const Http::Reply &reply ) const;
   void handleObject( const Http::Request &request, const Http::Reply &reply ) const;
   void handleAction( const Http::Request &request, size_t object, const Http::Reply &reply ) const;

   const BoardFiles::Board &board_;
   const std::string name_;
   const Source source_;
};

} // namespace Host
