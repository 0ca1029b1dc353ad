// Passes the raw SMBus operations of the host to the Ham of a device. No packet error checking.
#pragma once

#include "OrbisGeneric/Components/Device.h"
#include "OrbisGeneric/Components/SmbusProxy.h"

namespace Drivers {

class SmbusProxyDriver : public Component::HardwareDevice {
 public:
   static Component::HardwareDevice *create( const DriverArgs &args, Ham::Ham *ham );
   Component::LogicalDevice::SmbusProxy *newSmbusProxy( const DriverArgs &args ) override;

   class SmbusProxy : public Component::LogicalDevice::SmbusProxy {
    public:
      explicit SmbusProxy( Component::HardwareDevice *device ) : device_( device ) {}

      pl_status receiveByte( uint8_t *out ) override;
      pl_status sendByte( uint8_t byte ) override;
      pl_status readByte( uint8_t command, uint8_t *out ) override;
      pl_status writeByte( uint8_t command, uint8_t value ) override;
      pl_status readWord( uint8_t command, uint16_t *out ) override;
      pl_status writeWord( uint8_t command, uint16_t value ) override;
      // Copies all bytes that the device sends: buf must have room for its largest block.
      pl_status blockRead( uint8_t command, uint8_t *buf, unsigned int *len ) override;
      pl_status blockWrite( uint8_t command, const uint8_t *buf, unsigned int n ) override;
      // When the device does not send exactly n bytes: PL_STATUS_SOCKET, and buf is unchanged.
      pl_status i2cBlockRead( uint8_t command, uint8_t *buf, unsigned int n ) override;
      pl_status i2cBlockWrite( uint8_t command, const uint8_t *buf, unsigned int n ) override;
      pl_status processCall( uint8_t command, uint16_t value, uint16_t *out ) override;

      Component::HardwareDevice *device_;
   };
};

} // namespace Drivers
