// The board in one process, and a monitor over it.
#pragma once

#include "BoardInOneProcess.h"
#include "health/Monitor.h"
#include "host/serve/Events.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

class WatchedBoard {
 public:
   // All objects are up and were read; the modules in the cages, too, where they are wanted.
   explicit WatchedBoard( bool withModules = true );

   // The next second.
   void round();
   // Is called after each of them.
   void afterRound( std::function<void()> what ) { afterRound_ = std::move( what ); }
   // As orbis-smbus sim with these words would.
   void sim( const std::vector<std::string> &words );
   // Of a scenario: the clock goes on by rounds. Throws SmbusClient::Failed.
   SmbusControl::Response ask( const SmbusControl::Request &request );
   // The supply takes back what it has told.
   void clearFaults( const std::string &supply );

   BoardInOneProcess &board() { return board_; }
   const Health::Monitor &monitor() const { return monitor_; }
   // As serve would give them.
   std::string metrics();
   // Each event as "critical psu1 input lost: psu1-fan1, supplies" or "clear ...".
   const std::vector<std::string> &told() const { return told_; }
   // The words of the last event of a cause.
   const std::string &wordsOf( const std::string &cause ) const { return words_.at( cause ); }

 private:
   BoardInOneProcess board_;
   Health::Monitor monitor_;
   std::vector<std::string> told_{};
   std::map<std::string, std::string> words_{};
   Host::EventCounts counts_{};
   std::function<void()> afterRound_ = [] {};
   double behind_ = 0; // seconds of a scenario that were no round yet
};
