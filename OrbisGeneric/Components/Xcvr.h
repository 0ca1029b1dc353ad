// Transceiver cages, SFP and QSFP.
#pragma once

#include "OrbisGeneric/Components/Record.h"

namespace Component::LogicalDevice {

class SfpXcvr {
 public:
   pl_xcvr record_{ nullptr, &ops_, this };
   uint32_t xcvrId_ = 0;

   virtual ~SfpXcvr() = default;
   virtual int getPresence() = 0; // 1 or 0, not a status
   virtual pl_status getTxFault( int *value ) = 0;
   virtual pl_status getRxLos( int *value ) = 0;
   virtual pl_status getTxDisable( int *value ) = 0;
   virtual pl_status setTxDisable( int value ) = 0;

   static int getPresenceCallback( pl_xcvr *xcvr );
   static pl_status getTxFaultCallback( pl_xcvr *xcvr, int *value );
   static pl_status getRxLosCallback( pl_xcvr *xcvr, int *value );
   static pl_status getTxDisableCallback( pl_xcvr *xcvr, int *value );
   static pl_status setTxDisableCallback( pl_xcvr *xcvr, int value );
   static const pl_xcvr_ops ops_;
};

class QsfpXcvr {
 public:
   pl_xcvr record_{ nullptr, &ops_, this };
   uint32_t xcvrId_ = 0;

   virtual ~QsfpXcvr() = default;
   virtual int getPresence() = 0; // 1 or 0, not a status
   virtual pl_status getModSel( int *value ) = 0;
   virtual pl_status setModSel( int value ) = 0;
   virtual pl_status getLpMode( int *value ) = 0;
   virtual pl_status setLpMode( int value ) = 0;
   virtual pl_status getReset( int *value ) = 0;
   virtual pl_status setReset( int value ) = 0;
   virtual pl_status getInterrupt( int *value ) = 0;

   static int getPresenceCallback( pl_xcvr *xcvr );
   static pl_status getModSelCallback( pl_xcvr *xcvr, int *value );
   static pl_status setModSelCallback( pl_xcvr *xcvr, int value );
   static pl_status getLpModeCallback( pl_xcvr *xcvr, int *value );
   static pl_status setLpModeCallback( pl_xcvr *xcvr, int value );
   static pl_status getResetCallback( pl_xcvr *xcvr, int *value );
   static pl_status setResetCallback( pl_xcvr *xcvr, int value );
   static pl_status getInterruptCallback( pl_xcvr *xcvr, int *value );
   static const pl_xcvr_ops ops_;
};

static_assert( isTableSize<pl_xcvr_ops>( 44 ) );
static_assert( isTableSize<pl_sfp_ops>( 24 ) );
static_assert( isTableSize<pl_qsfp_ops>( 36 ) );

} // namespace Component::LogicalDevice
