// Raw SMBus access to one device, for the tools of the host.
#pragma once

#include "OrbisGeneric/Components/Record.h"

namespace Component::LogicalDevice {

// An operation that the driver does not support throws NotImplementedException. Objects are never
// deleted through this class.
class SmbusProxy {
 public:
   pl_smbus record_{ nullptr, &ops_, this };

   virtual pl_status quickCommand( int bit );
   virtual pl_status receiveByte( uint8_t *out );
   virtual pl_status sendByte( uint8_t byte );
   virtual pl_status readByte( uint8_t command, uint8_t *out );
   virtual pl_status writeByte( uint8_t command, uint8_t value );
   virtual pl_status readWord( uint8_t command, uint16_t *out );
   virtual pl_status writeWord( uint8_t command, uint16_t value );
   virtual pl_status blockRead( uint8_t command, uint8_t *buf, unsigned int *len );
   virtual pl_status blockWrite( uint8_t command, const uint8_t *buf, unsigned int n );
   virtual pl_status i2cBlockRead( uint8_t command, uint8_t *buf, unsigned int n );
   virtual pl_status i2cBlockWrite( uint8_t command, const uint8_t *buf, unsigned int n );
   virtual pl_status processCall( uint8_t command, uint16_t value, uint16_t *out );
   virtual pl_status blockProcessCall( uint8_t command, const uint8_t *buf, uint8_t n, uint8_t *out,
                                       uint8_t *outLen );

   static pl_status quickCommandCallback( pl_smbus *, int bit );
   static pl_status receiveByteCallback( pl_smbus *, uint8_t *out );
   static pl_status sendByteCallback( pl_smbus *, uint8_t byte );
   static pl_status readByteCallback( pl_smbus *, uint8_t command, uint8_t *out );
   static pl_status writeByteCallback( pl_smbus *, uint8_t command, uint8_t value );
   static pl_status readWordCallback( pl_smbus *, uint8_t command, uint16_t *out );
   static pl_status writeWordCallback( pl_smbus *, uint8_t command, uint16_t value );
   static pl_status blockReadCallback( pl_smbus *, uint8_t command, uint8_t *buf,
                                       unsigned int *len );
   static pl_status blockWriteCallback( pl_smbus *, uint8_t command, const uint8_t *buf,
                                        unsigned int n );
   static pl_status i2cBlockReadCallback( pl_smbus *, uint8_t command, uint8_t *buf,
                                          unsigned int n );
   static pl_status i2cBlockWriteCallback( pl_smbus *, uint8_t command, const uint8_t *buf,
                                           unsigned int n );
   static pl_status processCallCallback( pl_smbus *, uint8_t command, uint16_t value,
                                         uint16_t *out );
   static pl_status blockProcessCallCallback( pl_smbus *, uint8_t command, const uint8_t *buf,
                                              uint8_t n, uint8_t *out, uint8_t *outLen );
   static const pl_smbus_ops ops_;
};

static_assert( isTableSize<pl_smbus_ops>( 56 ) );

} // namespace Component::LogicalDevice
