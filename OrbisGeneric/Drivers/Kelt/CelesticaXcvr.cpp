#include "OrbisGeneric/Drivers/Kelt/CelesticaXcvr.h"

#include "OrbisGeneric/Assert.h"
#include "OrbisGeneric/HostServices.h"

namespace Drivers {

using namespace CelesticaCPLDMap;

// For the host the first port is 1, and so is the id that the callbacks trace. The driver's own
// traces count from 0.
CelXcvrCPLD::SfpXcvr::SfpXcvr( const CelXcvr &port ) : CelXcvr( port ) { xcvrId_ = port_ + 1u; }
CelXcvrCPLD::QsfpXcvr::QsfpXcvr( const CelXcvr &port ) : CelXcvr( port ) { xcvrId_ = port_ + 1u; }

pl_status CelXcvrCPLD::activeLow( pl_status status, int *value ) {
   if ( status == PL_STATUS_OK )
      *value = !*value;
   return status;
}

// A CPLD that isn't polled has no register maps, and its ports have no registers.
uint16_t CelXcvrCPLD::registerOf( MapIndex map, unsigned signal, const CelXcvr &xcvr ) const {
   assert( poll_ && "A transceiver needs a CPLD with xcvrPoll" );
   return CelesticaCPLDMap::registerOf( *registerMaps_.at( map ), signal, xcvr.registerIndex_ );
}

// Reads come from the cache. A write takes the other bits of the register from the cache.
pl_status CelXcvrCPLD::getSignal( MapIndex map, unsigned signal, const CelXcvr &xcvr, int *value ) {
   return getRegisterBit( registerOf( map, signal, xcvr ), xcvr.bitpos_, value, false );
}

pl_status CelXcvrCPLD::setSignal( MapIndex map, unsigned signal, const CelXcvr &xcvr, int value ) {
   return setRegisterBit( registerOf( map, signal, xcvr ), xcvr.bitpos_, value, false );
}

int CelXcvrCPLD::getQsfpPresence( QsfpXcvr *xcvr ) {
   int present = 0;
   getSignal( QsfpMap, QsfpPresence, *xcvr, &present );
   return present;
}

pl_status CelXcvrCPLD::getQsfpModSel( QsfpXcvr *xcvr, int * ) {
   PL_TRACE( 5, "%s(): id=%hhu", __func__, xcvr->port_ );
   return PL_STATUS_OK;
}

pl_status CelXcvrCPLD::setQsfpModSel( QsfpXcvr *xcvr, int ) {
   PL_TRACE( 5, "%s(): id=%hhu", __func__, xcvr->port_ );
   return PL_STATUS_OK;
}

pl_status CelXcvrCPLD::getQsfpLpMode( QsfpXcvr *xcvr, int *value ) {
   PL_TRACE( 5, "%s(): id=%hhu", __func__, xcvr->port_ );
   return getSignal( QsfpMap, QsfpLpMode, *xcvr, value );
}

pl_status CelXcvrCPLD::setQsfpLpMode( QsfpXcvr *xcvr, int value ) {
   PL_TRACE( 5, "%s(): id=%hhu", __func__, xcvr->port_ );
   return setSignal( QsfpMap, QsfpLpMode, *xcvr, value );
}

pl_status CelXcvrCPLD::getQsfpReset( QsfpXcvr *xcvr, int *value ) {
   PL_TRACE( 5, "%s(): id=%hhu", __func__, xcvr->port_ );
   return activeLow( getSignal( QsfpMap, QsfpReset, *xcvr, value ), value );
}

pl_status CelXcvrCPLD::setQsfpReset( QsfpXcvr *xcvr, int value ) {
   PL_TRACE( 5, "%s(): id=%hhu", __func__, xcvr->port_ );
   return setSignal( QsfpMap, QsfpReset, *xcvr, !value );
}

pl_status CelXcvrCPLD::getQsfpInterrupt( QsfpXcvr *xcvr, int *value ) {
   PL_TRACE( 5, "%s(): id=%hhu", __func__, xcvr->port_ );
   return activeLow( getSignal( QsfpMap, QsfpInterrupt, *xcvr, value ), value );
}

int CelXcvrCPLD::getSfpPresence( SfpXcvr *xcvr ) {
   int present = 0;
   getSignal( SfpMap, SfpPresence, *xcvr, &present );
   return present;
}

pl_status CelXcvrCPLD::getSfpRxLos( SfpXcvr *xcvr, int *value ) {
   return getSignal( SfpMap, SfpRxLos, *xcvr, value );
}

pl_status CelXcvrCPLD::getSfpTxDisable( SfpXcvr *xcvr, int *value ) {
   return getSignal( SfpMap, SfpTxDisable, *xcvr, value );
}

pl_status CelXcvrCPLD::setSfpTxDisable( SfpXcvr *xcvr, int value ) {
   return setSignal( SfpMap, SfpTxDisable, *xcvr, value );
}

pl_status CelXcvrCPLD::getSfpTxFault( SfpXcvr *xcvr, int *value ) {
   return getSignal( SfpMap, SfpTxFault, *xcvr, value );
}

} // namespace Drivers
