#pragma once

#include "host/commands/CommandSession.h"
#include "host/serve/HealthWatch.h"
#include "host/serve/ServerAccounts.h"
#include "host/terminal/Snapshot.h"

#include <functional>
#include <optional>
#include <string>

namespace Host {

// What watch knows of a board: from a serve while that answers. Without one from a session and a
// monitor of this command; the modules are then left out, since reading them clears the flags that
// they keep for whoever watches over them.
class WatchSource {
 public:
   // `news` is called when there is a newer snapshot. All must outlive this object.
   WatchSource( const BoardFiles::Board &board, const Options &options, CommandSession &session,
                std::function<void()> news );

   // Gets what is new, with the last readings of this object, if one is named.
   void refresh( const std::string &object );
   // As it is known now, with its age.
   Snapshot snapshot() const;

 private:
   void askServe( const std::string &object );
   void ask( const std::string &path, std::function<void( const std::string & )> answered );
   void answered();
   void look( const std::string &object );
   void takeBusses( const std::string &json, const std::string &error );
   std::string trouble( double age ) const;

   const BoardFiles::Board &board_;
   CommandSession &session_;
   const std::function<void()> news_;
   const Clock::duration patience_; // with a serve that doesn't answer
   const ServerAccounts accounts_;
   HealthWatch health_;
   Snapshot known_{};
   Time at_{}; // of what is known
   std::optional<BusAccounts> busses_{};
   std::string serve_{}; // the socket of the serve that is, or was, asked
   unsigned round_ = 0;
   // of the questions that were asked last:
   unsigned open_ = 0;
   bool isMissing_ = false; // an answer
   bool isWhole_ = true;    // of those before
};

} // namespace Host
