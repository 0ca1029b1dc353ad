#pragma once

#include "health/Event.h"
#include "host/journal/Journal.h"
#include "host/session/BackOff.h"

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Host {

// How many events there were of each kind and level.
using EventCounts = std::map<std::pair<Health::Event::What, Health::Level>, uint64_t>;

// Where serve tells what has happened to its board: in the journal, in the log, and to whoever
// listens. While the journal's file can't be used, it says so and keeps the events in memory.
class Events {
 public:
   // Tells the system's log; returns whether it could.
   using SystemLog = std::function<bool( const Health::Event & )>;

   // `systemLog` is empty where the log is the program's own. A file that can't be used is tried
   // again with an event that comes so much later.
   explicit Events( std::filesystem::path file, SystemLog systemLog = {},
                    Clock::duration retry = std::chrono::minutes( 1 ) );

   // What has happened, the first first, with the time of each. Gives each its id.
   void add( std::vector<Health::Event> events );

   // Those of the journal.
   std::vector<Health::Event> events( const Journal::Query &query ) const;
   uint64_t lastId() const { return lastId_; }
   // Of those that were added since this object is there.
   const EventCounts &counts() const { return counts_; }

   // Calls it after every add(), as long as it exists.
   using Listener = std::function<void()>;
   void tell( const std::shared_ptr<Listener> &listener );

   // `acknowledge` notes that a person has seen a cause, and returns whether there is such a cause.
   void acknowledgeWith( std::function<bool( const std::string &cause )> acknowledge ) {
      acknowledge_ = std::move( acknowledge );
   }
   bool acknowledge( const std::string &cause ) const {
      return acknowledge_ && acknowledge_( cause );
   }

 private:
   Journal openFile() const;
   void goOnInMemory( const std::string &why );
   void tryFileAgain();
   void log( const Health::Event &event ) const;

   const std::filesystem::path file_;
   const Clock::duration retry_;
   std::optional<Journal> journal_{};
   std::optional<Time> nextTry_{}; // only while the journal is in memory
   uint64_t lastInFile_ = 0;       // of the journal's ids, then
   uint64_t lastId_ = 0;
   EventCounts counts_{};
   const SystemLog systemLog_;
   std::vector<std::weak_ptr<Listener>> listeners_{};
   std::function<bool( const std::string & )> acknowledge_{};
};

} // namespace Host
