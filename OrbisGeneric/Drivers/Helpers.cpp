#include "OrbisGeneric/Drivers/Helpers.h"

#include "OrbisGeneric/Topology.h"

namespace Drivers {

DriverArgs &argumentsOf( Topology::Device &device ) {
   if ( !device.args ) {
      device.args = std::make_shared<DriverArgs>();
      device.args->did = device.did;
      device.args->uid = noComponent;
   }
   return *device.args;
}

} // namespace Drivers
