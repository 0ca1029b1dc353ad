#pragma once

#include "host/HealthReport.h"
#include "host/State.h"
#include "host/journal/Journal.h"
#include "host/serve/LiveBusses.h"
#include "host/serve/ServerAccounts.h"
#include "http/Exchange.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Host {

// What the pages that are open are told: all of a board at first, then once a second what is new.
// It is put into words once, however many pages there are, and not at all without one. Nothing is
// kept for a page: one that is more than a second behind is told all anew.
class LiveBoard {
 public:
   struct Source {
      std::function<BoardReport()> report{}; // that was described
      std::function<Health::Level()> level{};
      std::function<std::vector<Health::Cause>()> causes{};
      std::function<std::string()> fault{}; // why the board isn't read; empty: it is
      std::function<std::vector<Health::Event>( const Journal::Query & )> events{};
      std::function<uint64_t()> lastEvent{}; // its id
      std::function<void( ServerAccounts::LoadsAnswer )> askLoads{};
      bool canAct = false; // who has the token
   };

   // `name` is the board's for clients. Must outlive the loop's run.
   LiveBoard( std::string name, Source source )
      : name_( std::move( name ) ), source_( std::move( source ) ) {}

   // Calls it after each look() of tick(), as long as it exists.
   using Listener = std::function<void()>;
   void tell( const std::shared_ptr<Listener> &listener ) { listeners_.push_back( listener ); }

   // To be called once a second. Returns whether anybody listens: if not, it does nothing.
   bool tick();

   // Counts the looks at the board.
   uint64_t turn() const { return turn_; }
   // All that is known as of the last look, and what was new then: server-sent events, by
   // boards/live.schema.json.
   const std::string &all();
   const std::string &news() const { return news_; }

   static constexpr size_t mostEvents = 200;

 private:
   // As it was told last. Each is JSON.
   struct Told {
      std::string time{};
      std::string fault{};
      std::string_view level{};
      std::string ages{};
      std::vector<std::string> objects{};
      std::string causes{};
      std::vector<std::string> busses{};
      std::string bussesFault{};
      uint64_t lastEvent = 0;
   };

   void look();
   Told now() const;
   void write( const Told &before, const Told &now );
   void askBusses();

   const std::string name_;
   const Source source_;
   std::vector<std::weak_ptr<Listener>> listeners_{};
   uint64_t turn_ = 0;
   std::optional<Told> told_{}; // nothing while nobody listens
   std::string all_{};          // of this turn, once it was asked for
   std::string news_{};
   LiveBusses busses_{};
   std::string bussesFault_{};
   bool asks_ = false;
};

// A page's stream. The board outlives the loop's run.
std::shared_ptr<Http::Stream> liveStreamOf( LiveBoard &board );

} // namespace Host
