// A driver that updates its state regularly, with a host timer.
#pragma once

#include "OrbisGeneric/Components/Device.h"

namespace Component {

// The interval starts when a callback ends, so a slow callback delays the next one and expiries do
// not pile up.
class PollHardwareDevice : public HardwareDevice {
 public:
   PollHardwareDevice();
   ~PollHardwareDevice() override;

   virtual void pollCallback() = 0;

   // Arms the timer, unless it is armed. False, with a trace, when there is no interval or the host
   // refuses.
   bool pollStart();
   // Disarms the timer. False, with a trace, when the host refuses; the timer then stays armed.
   bool pollStop();
   // Arms the timer for one more interval. After a failure polling has ended, but `running` is
   // still true: only pollReset, or pollStop and then pollStart, start it again.
   bool pollReset();
   // Runs on each expiry.
   void pollCallbackWrapper();
   static void handlePollTimerCallback( void *self );

   bool running;
   pl_timer_handle timer;
   uint32_t pollInterval = 0; // milliseconds; 0: not set
};

} // namespace Component
