#include "OrbisGeneric/Components/SmbusProxy.h"

#include "OrbisGeneric/Assert.h"
#include "OrbisGeneric/Components/Add.h"
#include "OrbisGeneric/Components/NotImplementedException.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/LibraryInit.h"
#include "OrbisGeneric/Topology.h"

namespace Component::LogicalDevice {

pl_status SmbusProxy::quickCommand( int ) { throw NotImplementedException( "quickCommand" ); }
pl_status SmbusProxy::receiveByte( uint8_t * ) { throw NotImplementedException( "receiveByte" ); }
pl_status SmbusProxy::sendByte( uint8_t ) { throw NotImplementedException( "sendByte" ); }
pl_status SmbusProxy::readByte( uint8_t, uint8_t * ) {
   throw NotImplementedException( "readByte" );
}
pl_status SmbusProxy::writeByte( uint8_t, uint8_t ) {
   throw NotImplementedException( "writeByte" );
}
pl_status SmbusProxy::readWord( uint8_t, uint16_t * ) {
   throw NotImplementedException( "readWord" );
}
pl_status SmbusProxy::writeWord( uint8_t, uint16_t ) {
   throw NotImplementedException( "writeWord" );
}
pl_status SmbusProxy::blockRead( uint8_t, uint8_t *, unsigned int * ) {
   throw NotImplementedException( "blockRead" );
}
pl_status SmbusProxy::blockWrite( uint8_t, const uint8_t *, unsigned int ) {
   throw NotImplementedException( "blockWrite" );
}
pl_status SmbusProxy::i2cBlockRead( uint8_t, uint8_t *, unsigned int ) {
   throw NotImplementedException( "i2cBlockRead" );
}
pl_status SmbusProxy::i2cBlockWrite( uint8_t, const uint8_t *, unsigned int ) {
   throw NotImplementedException( "i2cBlockWrite" );
}
pl_status SmbusProxy::processCall( uint8_t, uint16_t, uint16_t * ) {
   throw NotImplementedException( "processCall" );
}
pl_status SmbusProxy::blockProcessCall( uint8_t, const uint8_t *, uint8_t, uint8_t *, uint8_t * ) {
   throw NotImplementedException( "blockProcessCall" );
}

pl_status SmbusProxy::quickCommandCallback( pl_smbus *smbus, int bit ) {
   PL_TRACE( 4, "%s", __func__ );
   return objectOf<SmbusProxy>( smbus )->quickCommand( bit );
}

pl_status SmbusProxy::receiveByteCallback( pl_smbus *smbus, uint8_t *out ) {
   PL_TRACE( 4, "%s", __func__ );
   return objectOf<SmbusProxy>( smbus )->receiveByte( out );
}

pl_status SmbusProxy::sendByteCallback( pl_smbus *smbus, uint8_t byte ) {
   PL_TRACE( 4, "%s", __func__ );
   return objectOf<SmbusProxy>( smbus )->sendByte( byte );
}

pl_status SmbusProxy::readByteCallback( pl_smbus *smbus, uint8_t command, uint8_t *out ) {
   PL_TRACE( 4, "%s", __func__ );
   return objectOf<SmbusProxy>( smbus )->readByte( command, out );
}

pl_status SmbusProxy::writeByteCallback( pl_smbus *smbus, uint8_t command, uint8_t value ) {
   PL_TRACE( 4, "%s", __func__ );
   return objectOf<SmbusProxy>( smbus )->writeByte( command, value );
}

pl_status SmbusProxy::readWordCallback( pl_smbus *smbus, uint8_t command, uint16_t *out ) {
   PL_TRACE( 4, "%s", __func__ );
   return objectOf<SmbusProxy>( smbus )->readWord( command, out );
}

pl_status SmbusProxy::writeWordCallback( pl_smbus *smbus, uint8_t command, uint16_t value ) {
   PL_TRACE( 4, "%s", __func__ );
   return objectOf<SmbusProxy>( smbus )->writeWord( command, value );
}

pl_status SmbusProxy::blockReadCallback( pl_smbus *smbus, uint8_t command, uint8_t *buf,
                                         unsigned int *len ) {
   PL_TRACE( 4, "%s", __func__ );
   return objectOf<SmbusProxy>( smbus )->blockRead( command, buf, len );
}

pl_status SmbusProxy::blockWriteCallback( pl_smbus *smbus, uint8_t command, const uint8_t *buf,
                                          unsigned int n ) {
   PL_TRACE( 4, "%s", __func__ );
   return objectOf<SmbusProxy>( smbus )->blockWrite( command, buf, n );
}

pl_status SmbusProxy::i2cBlockReadCallback( pl_smbus *smbus, uint8_t command, uint8_t *buf,
                                            unsigned int n ) {
   PL_TRACE( 4, "%s", __func__ );
   return objectOf<SmbusProxy>( smbus )->i2cBlockRead( command, buf, n );
}

pl_status SmbusProxy::i2cBlockWriteCallback( pl_smbus *smbus, uint8_t command, const uint8_t *buf,
                                             unsigned int n ) {
   PL_TRACE( 4, "%s", __func__ );
   return objectOf<SmbusProxy>( smbus )->i2cBlockWrite( command, buf, n );
}

pl_status SmbusProxy::processCallCallback( pl_smbus *smbus, uint8_t command, uint16_t value,
                                           uint16_t *out ) {
   PL_TRACE( 4, "%s", __func__ );
   return objectOf<SmbusProxy>( smbus )->processCall( command, value, out );
}

pl_status SmbusProxy::blockProcessCallCallback( pl_smbus *smbus, uint8_t command,
                                                const uint8_t *buf, uint8_t n, uint8_t *out,
                                                uint8_t *outLen ) {
   PL_TRACE( 4, "%s", __func__ );
   return objectOf<SmbusProxy>( smbus )->blockProcessCall( command, buf, n, out, outLen );
}

const pl_smbus_ops SmbusProxy::ops_ = {
   sizeof( pl_smbus_ops ), quickCommandCallback,     receiveByteCallback,  sendByteCallback,
   readByteCallback,       writeByteCallback,        readWordCallback,     writeWordCallback,
   blockReadCallback,      blockWriteCallback,       i2cBlockReadCallback, i2cBlockWriteCallback,
   processCallCallback,    blockProcessCallCallback,
};

} // namespace Component::LogicalDevice

pl_status pl_smbus_init( const char *topology ) {
   PL_TRACE( 7, "%s\n", __func__ );
   return static_cast<pl_status>( orbisLibraryInit( __func__, topology, connectionAttempts ) );
}

pl_smbus *pl_smbus_add( const char *text, uint8_t address ) {
   PL_TRACE( 7, "pl_smbus_add( '%s', %u )", text, address );
   Drivers::DriverArgs args;
   Component::DeviceBase *driver;
   if ( Topology::isDeviceObject( text ) ) {
      driver = Component::createDevice( text, args );
   } else {
      Topology::Device *device = Topology::getDeviceByLabel( text );
      assert( device );
      Drivers::DriverArgs &record = Topology::argumentsOf( text );
      record.driver = "SmbusProxyDriver";
      driver = Component::HardwareDevice::create( record, nullptr );
      if ( !driver )
         PL_TRACE( 0, "DeviceBase::create() failed" );
   }
   if ( !driver )
      return nullptr;
   auto *proxy = driver->newSmbusProxy( args );
   if ( !proxy )
      PL_TRACE( 0, "newSmbusProxy() failed" );
   return proxy ? &proxy->record_ : nullptr;
}
