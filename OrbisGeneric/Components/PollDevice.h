// A driver that refreshes its state from a host timer.
#pragma once

#include "OrbisGeneric/Components/Device.h"

namespace Component {

// The period runs from the end of one callback to the next expiry: a slow callback stretches the
// cycle instead of piling up expiries.
class PollHardwareDevice : public HardwareDevice {
 public:
   PollHardwareDevice();
   ~PollHardwareDevice() override;

   virtual void pollCallback() = 0;

   // Arms the timer unless it is armed. False, with a trace: no interval, or the host declined.
   bool pollStart();
   // Disarms it. False, with a trace, when the host declined; it is armed then as before.
   bool pollStop();
   // Arms it for one more period. After a failure here polling has ended though `running` says
   // otherwise: only pollReset, or pollStop and pollStart, take it up again.
   bool pollReset();
   // What runs on each expiry.
   void pollCallbackWrapper();
   static void handlePollTimerCallback( void *self );

   bool running;
   pl_timer_handle timer;
   uint32_t pollInterval = 0; // milliseconds; 0: not set
};

} // namespace Component
