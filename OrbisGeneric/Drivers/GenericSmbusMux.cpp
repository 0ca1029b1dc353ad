#include "OrbisGeneric/Drivers/GenericSmbusMux.h"

#include "OrbisGeneric/Assert.h"
#include "OrbisGeneric/Ham/Ham.h"

namespace Drivers {

Component::HardwareDevice *GenericSmbusMux::create( const DriverArgs &, Ham::Ham * ) {
   return new GenericSmbusMux;
}

Component::LogicalDevice::Mux *GenericSmbusMux::newMux( const DriverArgs &, unsigned int value ) {
   return new Mux( this, value );
}

bool GenericSmbusMux::Mux::selectRequest( Ham::Ham *ham ) {
   ham->addSendByte( value_ & 0xFF, false );
   return true;
}

bool GenericSmbusMux::Mux::resetRequest( Ham::Ham *ham ) {
   ham->addSendByte( 0, false );
   return true;
}

pl_status GenericSmbusMux::Mux::executeMuxRequest() {
   Ham::Ham *ham = device_->ham_;
   ham->prepare();
   selectRequest( ham );
   return ham->execute();
}

} // namespace Drivers
