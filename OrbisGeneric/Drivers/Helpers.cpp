#include "OrbisGeneric/Drivers/Helpers.h"

#include "OrbisGeneric/Assert.h"
#include "OrbisGeneric/Components/Device.h"
#include "OrbisGeneric/HostServices.h"
#include "OrbisGeneric/Topology.h"

namespace Drivers {

void FormatFdl::start() {
   text_ = template_;
   active_ = true;
}

bool FormatFdl::set( std::string key, std::string value ) {
   PL_TRACE( 5, "FormatFdl::set( '%s', '%s' )", key.c_str(), value.c_str() );
   assert( active_ && "FormatFdl: Must call start() before set(...)" );
   const std::string placeholder = "{" + key + "}";
   const size_t found = text_.find( placeholder );
   if ( found == std::string::npos )
      PL_TRACE( 0, "Error: FormatFdl::set -- invalid key '%s'", placeholder.c_str() );
   assert( found != std::string::npos );
   text_.replace( found, placeholder.size(), value );
   return true;
}

const char *FormatFdl::charPtr() {
   assert( active_ && "FormatFdl: Must call start() before charPtr()" );
   active_ = false;
   return text_.c_str();
}

std::string trim( std::string s ) {
   const char *const blanks = " \t";
   const size_t first = s.find_first_not_of( blanks );
   if ( first == std::string::npos )
      return "";
   return s.substr( first, s.find_last_not_of( blanks ) - first + 1 );
}

Component::HardwareDevice *getHardwareDeviceByLabel( const char *label, std::string driver ) {
   Topology::Device *topoDev = Topology::getDeviceByLabel( label );
   assert( topoDev );
   DriverArgs &args = Topology::argumentsOf( label );
   if ( args.driver.empty() )
      args.driver = std::move( driver );
   auto *device = Component::HardwareDevice::create( args, nullptr );
   assert( device );
   return device;
}

Component::LogicalDevice::Gpio *getRegGpioForDevice( Component::HardwareDevice *device,
                                                     unsigned int reg, unsigned int bitpos ) {
   DriverArgs args;
   args.driverArgs["register"] = std::to_string( reg );
   args.driverArgs["bitpos"] = std::to_string( bitpos );
   auto *gpio = device->newGpio( args );
   assert( gpio );
   return gpio;
}

Component::LogicalDevice::Gpio *getRegGpioForDevice( const char *label, unsigned int reg,
                                                     unsigned int bitpos ) {
   return getRegGpioForDevice( getHardwareDeviceByLabel( label, "Dummy" ), reg, bitpos );
}

} // namespace Drivers
