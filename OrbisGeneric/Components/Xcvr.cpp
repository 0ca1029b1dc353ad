#include "OrbisGeneric/Components/Xcvr.h"

#include "OrbisGeneric/Assert.h"
#include "OrbisGeneric/Components/Add.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/LibraryInit.h"

namespace Component::LogicalDevice {

namespace {

template <typename Xcvr>
Xcvr *traced( const char *callback, pl_xcvr *record ) {
   auto *xcvr = objectOf<Xcvr>( record );
   PL_TRACE( 4, "%s(%u)", callback, xcvr->xcvrId_ );
   return xcvr;
}

template <typename Xcvr>
Xcvr *traced( const char *callback, pl_xcvr *record, int value ) {
   auto *xcvr = objectOf<Xcvr>( record );
   PL_TRACE( 4, "%s(%u, %d)", callback, xcvr->xcvrId_, value );
   return xcvr;
}

} // namespace

int SfpXcvr::getPresenceCallback( pl_xcvr *xcvr ) {
   return traced<SfpXcvr>( __func__, xcvr )->getPresence();
}

pl_status SfpXcvr::getTxFaultCallback( pl_xcvr *xcvr, int *value ) {
   return traced<SfpXcvr>( __func__, xcvr )->getTxFault( value );
}

pl_status SfpXcvr::getRxLosCallback( pl_xcvr *xcvr, int *value ) {
   return traced<SfpXcvr>( __func__, xcvr )->getRxLos( value );
}

pl_status SfpXcvr::getTxDisableCallback( pl_xcvr *xcvr, int *value ) {
   return traced<SfpXcvr>( __func__, xcvr )->getTxDisable( value );
}

pl_status SfpXcvr::setTxDisableCallback( pl_xcvr *xcvr, int value ) {
   return traced<SfpXcvr>( __func__, xcvr, value )->setTxDisable( value );
}

const pl_xcvr_ops SfpXcvr::ops_ = {
   sizeof( pl_xcvr_ops ),
   PL_XCVR_SFP,
   { .sfp = { sizeof( pl_sfp_ops ), getPresenceCallback, getTxFaultCallback, getRxLosCallback,
              getTxDisableCallback, setTxDisableCallback } },
};

int QsfpXcvr::getPresenceCallback( pl_xcvr *xcvr ) {
   return traced<QsfpXcvr>( __func__, xcvr )->getPresence();
}

pl_status QsfpXcvr::getModSelCallback( pl_xcvr *xcvr, int *value ) {
   return traced<QsfpXcvr>( __func__, xcvr )->getModSel( value );
}

pl_status QsfpXcvr::setModSelCallback( pl_xcvr *xcvr, int value ) {
   return traced<QsfpXcvr>( __func__, xcvr, value )->setModSel( value );
}

pl_status QsfpXcvr::getLpModeCallback( pl_xcvr *xcvr, int *value ) {
   return traced<QsfpXcvr>( __func__, xcvr )->getLpMode( value );
}

pl_status QsfpXcvr::setLpModeCallback( pl_xcvr *xcvr, int value ) {
   return traced<QsfpXcvr>( __func__, xcvr, value )->setLpMode( value );
}

pl_status QsfpXcvr::getResetCallback( pl_xcvr *xcvr, int *value ) {
   return traced<QsfpXcvr>( __func__, xcvr )->getReset( value );
}

pl_status QsfpXcvr::setResetCallback( pl_xcvr *xcvr, int value ) {
   return traced<QsfpXcvr>( __func__, xcvr, value )->setReset( value );
}

pl_status QsfpXcvr::getInterruptCallback( pl_xcvr *xcvr, int *value ) {
   return traced<QsfpXcvr>( __func__, xcvr )->getInterrupt( value );
}

const pl_xcvr_ops QsfpXcvr::ops_ = {
   sizeof( pl_xcvr_ops ),
   PL_XCVR_QSFP,
   { .qsfp = { sizeof( pl_qsfp_ops ), getPresenceCallback, getModSelCallback, setModSelCallback,
               getLpModeCallback, setLpModeCallback, getResetCallback, setResetCallback,
               getInterruptCallback } },
};

} // namespace Component::LogicalDevice

pl_status pl_xcvr_init( const char *topology ) {
   return static_cast<pl_status>( orbisLibraryInit( __func__, topology, connectionAttempts ) );
}

namespace {

std::string unquoted( const std::string &text ) {
   if ( text.size() >= 2 && text.front() == '"' && text.back() == '"' )
      return text.substr( 1, text.size() - 2 );
   return text;
}

} // namespace

pl_xcvr *pl_xcvr_add( const char *json ) {
   Drivers::DriverArgs args;
   auto *device = Component::createDevice( json, args );
   if ( !device )
      return nullptr;

   auto idIt = args.driverArgs.find( "id" );
   if ( idIt == args.driverArgs.end() )
      PL_TRACE( 0, "No id argument given for Xcvr" );
   assert( idIt != args.driverArgs.end() );
   const auto id = static_cast<unsigned>( std::stoi( unquoted( idIt->second ) ) );

   auto typeIt = args.driverArgs.find( "type" );
   if ( typeIt == args.driverArgs.end() )
      PL_TRACE( 0, "No type argument given for Xcvr" );
   assert( typeIt != args.driverArgs.end() );
   const std::string &type = typeIt->second;

   if ( type == "qsfp" || type == "qsfp+" ) {
      if ( auto *xcvr = device->newQsfpXcvr( id, args ) )
         return &xcvr->record_;
      PL_TRACE( 0, "newQsfpXcvr() failed" );
      return nullptr;
   }
   if ( type == "sfp" || type == "sfp+" ) {
      if ( auto *xcvr = device->newSfpXcvr( id, args ) )
         return &xcvr->record_;
      PL_TRACE( 0, "newSfpXcvr() failed" );
      return nullptr;
   }
   PL_TRACE( 0, "Xcvr type %s not supported", type.c_str() );
   assert( false && "Xcvr type not supported" );
   return nullptr;
}
