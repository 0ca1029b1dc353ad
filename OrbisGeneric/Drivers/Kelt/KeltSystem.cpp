#include "OrbisGeneric/Drivers/Kelt/KeltSystem.h"

#include "OrbisGeneric/Assert.h"
#include "OrbisGeneric/Components/Gpio.h"
#include "OrbisGeneric/Drivers/Helpers.h"
#include "OrbisGeneric/Drivers/Kelt/KeltPCA9506.h"
#include "OrbisGeneric/LibraryInit.h"

namespace {

// The system CPLD's power-cycle bit.
constexpr unsigned powerCycleRegister = 0x102;
constexpr unsigned powerCycleBit = 0;

} // namespace

static_assert( Component::LogicalDevice::isTableSize<pl_system_ops>( 16 ) );

const pl_system_ops ops = { sizeof( pl_system_ops ), pl_system_poweroff, pl_system_powercycle,
                            pl_system_get_reload_cause };

pl_status pl_system_init( const char *topology ) {
   return static_cast<pl_status>( orbisLibraryInit( __func__, topology, connectionAttempts ) );
}

pl_system *pl_system_add( const char *json ) {
   PL_TRACE( 0, "pl_system_add( '%s' )", json );
   return new pl_system{ nullptr, &ops };
}

pl_status pl_system_get_reload_cause( pl_system *, char ( * )[100], long *, char ( * )[500] ) {
   return PL_STATUS_NOT_PROVIDED;
}

// The CPLD switches the power off and on again, so after a success the system does not continue.
pl_status pl_system_powercycle( pl_system * ) {
   auto *gpio = Drivers::getRegGpioForDevice( "Cpld", powerCycleRegister, powerCycleBit );
   assert( gpio );
   gpio->hostFlag_ = true;
   return gpio->bitSet();
}

// This driver name lacks its 9, so no such driver exists. Power off works only when the topology
// names the driver of the device.
pl_status pl_system_poweroff( pl_system * ) {
   auto *device = Drivers::getHardwareDeviceByLabel( "Pca9506", "KeltPCA506" );
   auto *expander = dynamic_cast<Drivers::KeltPCA9506 *>( device );
   assert( expander );
   return expander->poweroff();
}
