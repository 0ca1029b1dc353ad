#include "OrbisGeneric/Components/Slot.h"

#include "OrbisGeneric/Components/Add.h"
#include "OrbisGeneric/LibraryInit.h"

namespace Component::LogicalDevice {

pl_status Slot::getPresenceCallback( pl_slot *slot, char **fdl ) {
   PL_TRACE( 4, "%s(%p)", __func__, static_cast<void *>( slot ) );
   return objectOf<Slot>( slot )->getPresence( fdl );
}

const pl_slot_ops Slot::ops_ = { sizeof( pl_slot_ops ), getPresenceCallback };

} // namespace Component::LogicalDevice

pl_status pl_slot_init( const char *topology ) {
   return static_cast<pl_status>( orbisLibraryInit( __func__, topology, connectionAttempts ) );
}

pl_slot *pl_slot_add( const char *json ) {
   auto *slot = Component::addObject( json, &Component::DeviceBase::newSlot, "newSlot() failed" );
   return slot ? &slot->record_ : nullptr;
}
