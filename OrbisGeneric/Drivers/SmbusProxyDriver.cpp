#include "OrbisGeneric/Drivers/SmbusProxyDriver.h"

#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/Ham/Ham.h"

#include <algorithm>

namespace Drivers {

Component::HardwareDevice *SmbusProxyDriver::create( const DriverArgs &, Ham::Ham * ) {
   return new SmbusProxyDriver;
}

Component::LogicalDevice::SmbusProxy *SmbusProxyDriver::newSmbusProxy( const DriverArgs & ) {
   return new SmbusProxy( this );
}

pl_status SmbusProxyDriver::SmbusProxy::receiveByte( uint8_t *out ) {
   return device_->ham_->recvByte( out );
}

pl_status SmbusProxyDriver::SmbusProxy::sendByte( uint8_t byte ) {
   return device_->ham_->sendByte( byte, false );
}

pl_status SmbusProxyDriver::SmbusProxy::readByte( uint8_t command, uint8_t *out ) {
   return device_->ham_->read8( command, out );
}

pl_status SmbusProxyDriver::SmbusProxy::writeByte( uint8_t command, uint8_t value ) {
   return device_->ham_->write8( command, value, false );
}

pl_status SmbusProxyDriver::SmbusProxy::readWord( uint8_t command, uint16_t *out ) {
   return device_->ham_->read16( command, out );
}

pl_status SmbusProxyDriver::SmbusProxy::writeWord( uint8_t command, uint16_t value ) {
   return device_->ham_->write16( command, value, false );
}

pl_status SmbusProxyDriver::SmbusProxy::blockRead( uint8_t command, uint8_t *buf,
                                                   unsigned int *len ) {
   std::string bytes;
   const pl_status status = device_->ham_->readBlock( command, &bytes );
   *len = static_cast<unsigned>( bytes.size() );
   std::copy( bytes.begin(), bytes.end(), buf );
   return status;
}

pl_status SmbusProxyDriver::SmbusProxy::blockWrite( uint8_t command, const uint8_t *buf,
                                                    unsigned int n ) {
   return device_->ham_->writeBlock( command, buf, n, false );
}

pl_status SmbusProxyDriver::SmbusProxy::i2cBlockRead( uint8_t command, uint8_t *buf,
                                                      unsigned int n ) {
   std::string bytes;
   const pl_status status = device_->ham_->read( command, n, &bytes );
   if ( bytes.size() != n )
      return PL_STATUS_SOCKET;
   std::copy( bytes.begin(), bytes.end(), buf );
   return status;
}

pl_status SmbusProxyDriver::SmbusProxy::i2cBlockWrite( uint8_t command, const uint8_t *buf,
                                                       unsigned int n ) {
   return device_->ham_->write( command, buf, n, false );
}

pl_status SmbusProxyDriver::SmbusProxy::processCall( uint8_t command, uint16_t value,
                                                     uint16_t *out ) {
   return device_->ham_->processCall( command, value, out );
}

} // namespace Drivers
