#pragma once

#include "host/plugin/Messages.h"

#include <deque>
#include <functional>
#include <optional>

namespace Host {

// Actions that users asked for and that are not finished, oldest first.
class PendingActions {
 public:
   // Called with the result of an action: a reading with the operation's name.
   using Answer = std::function<void( const Reading & )>;

   void add( size_t object, const Action &action, Answer answer );
   // The oldest action whose object can do it now.
   std::optional<Command> next( const std::function<bool( size_t object )> &can ) const;
   // Answers the object's oldest action, and removes it.
   void answer( size_t object, const Reading &reading );
   // Answers all actions of the object with a fault, and removes them.
   void refuse( size_t object, const Fault &fault );

 private:
   struct Pending {
      size_t object;
      Action action;
      Answer answer;
   };

   std::deque<Pending> all_{};
};

} // namespace Host
