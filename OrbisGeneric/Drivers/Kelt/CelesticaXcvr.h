// The transceiver ports of the CPLDs, with the records for the host.
#pragma once

#include "OrbisGeneric/Drivers/Kelt/CelesticaCPLD.h"

namespace Drivers {

// A port and the place of its bits.
class CelXcvrCPLD::CelXcvr {
 public:
   CelXcvr( uint8_t port, uint8_t registerIndex, uint8_t bitpos, CelXcvrCPLD *cpld )
      : port_( port ), registerIndex_( registerIndex ), bitpos_( bitpos ), cpld_( cpld ) {}

   uint8_t port_; // from 0
   uint8_t registerIndex_;
   uint8_t bitpos_;
   CelXcvrCPLD *cpld_;
};

class CelXcvrCPLD::SfpXcvr : public CelXcvr, public Component::LogicalDevice::SfpXcvr {
 public:
   explicit SfpXcvr( const CelXcvr &port );

   int getPresence() override { return cpld_->getSfpPresence( this ); }
   pl_status getTxFault( int *value ) override { return cpld_->getSfpTxFault( this, value ); }
   pl_status getRxLos( int *value ) override { return cpld_->getSfpRxLos( this, value ); }
   pl_status getTxDisable( int *value ) override { return cpld_->getSfpTxDisable( this, value ); }
   pl_status setTxDisable( int value ) override { return cpld_->setSfpTxDisable( this, value ); }
};

class CelXcvrCPLD::QsfpXcvr : public CelXcvr, public Component::LogicalDevice::QsfpXcvr {
 public:
   explicit QsfpXcvr( const CelXcvr &port );

   int getPresence() override { return cpld_->getQsfpPresence( this ); }
   pl_status getModSel( int *value ) override { return cpld_->getQsfpModSel( this, value ); }
   pl_status setModSel( int value ) override { return cpld_->setQsfpModSel( this, value ); }
   pl_status getLpMode( int *value ) override { return cpld_->getQsfpLpMode( this, value ); }
   pl_status setLpMode( int value ) override { return cpld_->setQsfpLpMode( this, value ); }
   pl_status getReset( int *value ) override { return cpld_->getQsfpReset( this, value ); }
   pl_status setReset( int value ) override { return cpld_->setQsfpReset( this, value ); }
   pl_status getInterrupt( int *value ) override { return cpld_->getQsfpInterrupt( this, value ); }
};

} // namespace Drivers
