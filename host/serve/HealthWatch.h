#pragma once

#include "boardfiles/Board.h"
#include "health/Monitor.h"
#include "health/pmbus/Limits.h"
#include "host/serve/ServerAccounts.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace Host {

// Gives a monitor what it needs: a report of the board, and when something can't be read, what the
// plug-in's server knows of that.
class HealthWatch {
 public:
   using Told = std::function<void( const std::vector<Health::Event> & )>;

   // All must outlive this object. Seconds as of Health::Monitor.
   HealthWatch( const BoardFiles::Board &board, const ServerAccounts &accounts, double settle,
                Told told );

   // What a supply itself knows of limits, from an SMBus object that reads its status.
   void knows( size_t object, const std::vector<Health::Pmbus::Limit> &limits );

   // A module's own thresholds, by value.
   void knows( size_t module, const std::map<std::string, BoardFiles::ValueLimits> &limits );

   // `told` is called once: now, or when the server has answered. Until then another call does
   // nothing.
   void look( const Health::BoardReport &report, const std::string &plugInFault );

   Health::Monitor &monitor() { return monitor_; }

 private:
   void update( const Health::BoardReport &report, const Health::Surroundings &surroundings );

   const BoardFiles::Board &board_;
   const ServerAccounts &accounts_;
   Health::Monitor monitor_;
   const Told told_;
   bool asks_ = false;
};

Health::Instant instantNow();

} // namespace Host
