#pragma once

namespace Simulator {

// A module as its cage sees it: lines of its own between the two, beside the bus.
class Pluggable {
 public:
   // From the cage; true: active. A cage drives those that it has.
   struct Orders {
      bool reset = false;
      bool lowPower = false;
      bool txDisable = false;
      bool operator==( const Orders & ) const = default;
   };
   // From the module; true: active.
   struct Signals {
      bool interrupt = false;
      bool rxLos = false;
      bool txFault = false;
   };

   virtual ~Pluggable() = default;
   virtual void ordersAre( const Orders & ) = 0;
   // Now; none of a module that is not there or has no power.
   virtual Signals signals() = 0;
};

} // namespace Simulator
