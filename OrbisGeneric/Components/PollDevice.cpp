#include "OrbisGeneric/Components/PollDevice.h"

#include "OrbisGeneric/HostServices.h"

namespace Component {

PollHardwareDevice::PollHardwareDevice() : running( false ) {
   PL_TRACE( 0, "creating timer" );
   timer = HostServices::timerAdd( handlePollTimerCallback, this );
}

PollHardwareDevice::~PollHardwareDevice() {
   PL_TRACE( 0, "destroying timer" );
   HostServices::timerDelete( timer );
}

bool PollHardwareDevice::pollStart() {
   if ( running )
      return true;
   if ( pollInterval == 0 ) {
      PL_TRACE( 0, "no polling interval set" );
      return false;
   }
   PL_TRACE( 0, "setting polling interval to %ums", pollInterval );
   return pollReset();
}

bool PollHardwareDevice::pollReset() {
   if ( HostServices::timerSet( timer, pollInterval ) != 0 ) {
      PL_TRACE( 0, "failed to set timer interval" );
      return false;
   }
   running = true;
   return true;
}

bool PollHardwareDevice::pollStop() {
   if ( !running )
      return true;
   if ( HostServices::timerCancel( timer ) != 0 ) {
      PL_TRACE( 0, "failed to cancel timer" );
      return false;
   }
   running = false;
   return true;
}

void PollHardwareDevice::pollCallbackWrapper() {
   PL_TRACE( 6, "pollCallbackWrapper" );
   pollCallback();
   pollReset();
}

void PollHardwareDevice::handlePollTimerCallback( void *self ) {
   static_cast<PollHardwareDevice *>( self )->pollCallbackWrapper();
}

} // namespace Component
