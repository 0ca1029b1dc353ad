#pragma once

#include "host/plugin/Messages.h"

#include <deque>
#include <functional>
#include <optional>

namespace Host {

// What users asked of objects and was not answered yet, in the order in which it came.
class PendingActions {
 public:
   // Told how an action ended, as a reading with the operation's name.
   using Answer = std::function<void( const Reading & )>;

   void add( size_t object, const Action &action, Answer answer );
   // The first that was asked of an object that can do it now.
   std::optional<Command> next( const std::function<bool( size_t object )> &can ) const;
   // Answers what was asked of the object first.
   void answer( size_t object, const Reading &reading );
   // Answers all that was asked of the object until now with a fault.
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
