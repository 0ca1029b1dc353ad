#include "OrbisGeneric/Components/Gpio.h"

#include "OrbisGeneric/Assert.h"
#include "OrbisGeneric/Components/Add.h"
#include "OrbisGeneric/Components/NotImplementedException.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/Ham/Ham.h"
#include "OrbisGeneric/LibraryInit.h"

#include <bit>

namespace Component::LogicalDevice {

namespace {

int decimalArgument( const Drivers::DriverArgs &args, const char *key ) {
   auto it = args.driverArgs.find( key );
   assert( it != args.driverArgs.end() );
   return std::stoi( it->second );
}

} // namespace

RegGpio::RegGpio( HardwareDevice *owner, const Drivers::DriverArgs &args )
   : device( owner ), reg( decimalArgument( args, "register" ) ),
     bitpos( decimalArgument( args, "bitpos" ) ) {}

pl_status RegGpio::bitRead( unsigned int *value ) {
   uint8_t byte = 0;
   if ( pl_status status = device->ham_->read8( static_cast<unsigned>( reg ), &byte ) )
      return status;
   *value = std::rotr( static_cast<uint32_t>( byte ), bitpos ) & 1;
   return PL_STATUS_OK;
}

// Bit positions are modulo 32. Only the low eight bits of a mask are used.
pl_status RegGpio::bitSet() {
   return readModifyWrite( 0x00, 0xFF, static_cast<uint8_t>( std::rotl( 1u, bitpos ) ) );
}

pl_status RegGpio::bitClear() {
   return readModifyWrite( 0xFF, static_cast<uint8_t>( std::rotl( 0xFFFFFFFEu, bitpos ) ), 0x00 );
}

pl_status RegGpio::readModifyWrite( uint8_t unread, uint8_t keep, uint8_t set ) {
   uint8_t byte = unread;
   if ( !writeOnly )
      if ( pl_status status = device->ham_->read8( static_cast<unsigned>( reg ), &byte ) )
         return status;
   return device->ham_->write8( static_cast<unsigned>( reg ),
                                static_cast<uint8_t>( ( byte & keep ) | set ), false );
}

pl_status Gpio::bitSetCallback( pl_gpio *gpio ) {
   PL_TRACE( 4, "%s", __func__ );
   return objectOf<Gpio>( gpio )->bitSet();
}

pl_status Gpio::bitClearCallback( pl_gpio *gpio ) {
   PL_TRACE( 4, "%s", __func__ );
   return objectOf<Gpio>( gpio )->bitClear();
}

pl_status Gpio::bitReadCallback( pl_gpio *gpio, unsigned int *value ) {
   PL_TRACE( 4, "%s", __func__ );
   return objectOf<Gpio>( gpio )->bitRead( value );
}

const pl_gpio_ops Gpio::ops_ = { sizeof( pl_gpio_ops ), bitSetCallback, bitClearCallback,
                                 bitReadCallback };

} // namespace Component::LogicalDevice

pl_status pl_gpio_init( const char *topology ) {
   return static_cast<pl_status>( orbisLibraryInit( __func__, topology, connectionAttempts ) );
}

pl_gpio *pl_gpio_add( const char *json ) {
   Drivers::DriverArgs args;
   auto *device = Component::createDevice( json, args );
   if ( !device )
      return nullptr;
   auto *hardware = dynamic_cast<Component::HardwareDevice *>( device );
   if ( !hardware ) // a MultiDevice has no registers
      throw NotImplementedException( "newGpio" );
   auto *gpio = hardware->newGpio( args );
   return gpio ? &gpio->record_ : nullptr;
}
