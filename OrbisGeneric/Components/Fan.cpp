#include "OrbisGeneric/Components/Fan.h"

#include "OrbisGeneric/Components/Add.h"
#include "OrbisGeneric/LibraryInit.h"

namespace Component::LogicalDevice {

pl_status Fan::getRpmCallback( pl_fan *fan, int *rpm ) {
   PL_TRACE( 4, "%s(%p)", __func__, static_cast<void *>( fan ) );
   return objectOf<Fan>( fan )->getRpm( rpm );
}

pl_status Fan::setRpmCallback( pl_fan *fan, int rpm ) {
   PL_TRACE( 4, "%s(%p, %d)", __func__, static_cast<void *>( fan ), rpm );
   return objectOf<Fan>( fan )->setRpm( rpm );
}

const pl_fan_ops Fan::ops_ = { sizeof( pl_fan_ops ), nullptr, getRpmCallback, setRpmCallback };

} // namespace Component::LogicalDevice

pl_status pl_fan_init( const char *topology ) {
   return static_cast<pl_status>( orbisLibraryInit( __func__, topology, connectionAttempts ) );
}

pl_fan *pl_fan_add( const char *json ) {
   auto *fan = Component::addObject( json, &Component::DeviceBase::newFan, "newFan() failed" );
   return fan ? &fan->record_ : nullptr;
}
