// The board's transceiver cages and front LEDs. They are connected to two CPLDs: one has 32 QSFP
// ports, the other 48 SFP and 6 QSFP ports. The port registers are cached and polled once a second.
#pragma once

#include "OrbisGeneric/Components/Led.h"
#include "OrbisGeneric/Components/PollDevice.h"
#include "OrbisGeneric/Components/Xcvr.h"
#include "OrbisGeneric/Drivers/Kelt/CelesticaCPLDMap.h"

namespace Drivers {

class CelXcvrCPLD : public Component::PollHardwareDevice {
 public:
   using XcvrId = unsigned int; // from 1
   using Registers = CelesticaCPLDMap::Registers;
   using Limits = CelesticaCPLDMap::Limits;
   class CelXcvr;
   class SfpXcvr;
   class QsfpXcvr;
   class Led;
   class SystemLed;
   class PsuLed;

   explicit CelXcvrCPLD( bool poll ) : poll_( poll ) {}

   // When poll is set: fills the cache and starts polling.
   void init() override;
   void pollCallback() override;
   // "id" (1 or 2), "type" ("status": the system LED, "psu": a PSU LED; any other: null).
   Component::LogicalDevice::Led *newLed( const DriverArgs &args ) override;

   int getQsfpPresence( QsfpXcvr *xcvr );
   pl_status getQsfpModSel( QsfpXcvr *xcvr, int *value ); // only traces: there is no such line
   pl_status setQsfpModSel( QsfpXcvr *xcvr, int value );  // only traces: there is no such line
   pl_status getQsfpLpMode( QsfpXcvr *xcvr, int *value );
   pl_status setQsfpLpMode( QsfpXcvr *xcvr, int value );
   pl_status getQsfpReset( QsfpXcvr *xcvr, int *value );
   pl_status setQsfpReset( QsfpXcvr *xcvr, int value );
   pl_status getQsfpInterrupt( QsfpXcvr *xcvr, int *value );
   int getSfpPresence( SfpXcvr *xcvr );
   pl_status getSfpRxLos( SfpXcvr *xcvr, int *value );
   pl_status getSfpTxDisable( SfpXcvr *xcvr, int *value );
   pl_status setSfpTxDisable( SfpXcvr *xcvr, int value );
   pl_status getSfpTxFault( SfpXcvr *xcvr, int *value );

   // Adds the register group of a port (from 0) to registerIndex and sets bitpos. Without limits
   // both are unchanged. For a port after the last limit bitpos is unchanged.
   static void computeOffsetAndBitpos( const Limits &limits, uint32_t port, uint8_t &registerIndex,
                                       uint8_t &bitpos );
   // Returns a bit of the cache. When refresh is set, the register is read from the bus first. A
   // register that was never read is 0.
   pl_status getRegisterBit( uint16_t reg, uint8_t bit, int *value, bool refresh );
   // Changes one bit and writes the register. readFirst: takes the other bits from the bus,
   // otherwise from the cache. After a failed write the cache is unchanged.
   pl_status setRegisterBit( uint16_t reg, uint8_t bit, int value, bool readFirst );
   // Inverts the value of an active-low line.
   static pl_status activeLow( pl_status status, int *value );
   // Reads all registers of the maps in one batch. On a failure: false, and the cache is unchanged.
   bool updateRegisterCache();
   // Switches every port error LED off.
   void setQsfpLedsRegister();

 protected:
   std::map<uint16_t, uint8_t> registerCache_;
   std::vector<const Registers *> registerMaps_; // 0: QSFP, 1: SFP
   bool poll_;
   const Registers *portLeds_ = nullptr;

 private:
   enum MapIndex { QsfpMap, SfpMap };
   uint16_t registerOf( MapIndex map, unsigned signal, const CelXcvr &xcvr ) const;
   pl_status getSignal( MapIndex map, unsigned signal, const CelXcvr &xcvr, int *value );
   pl_status setSignal( MapIndex map, unsigned signal, const CelXcvr &xcvr, int value );
};

// An LED of the CPLD's LED register. It is on the blink list while it blinks in software.
class CelXcvrCPLD::Led : public Component::LogicalDevice::Led {
 public:
   Led( CelXcvrCPLD *cpld, uint8_t id ) : cpld_( cpld ), id_( id ) {}
   bool handleBlinkTimer( bool on ) override;

 protected:
   pl_status readLeds( uint8_t *leds );

   CelXcvrCPLD *cpld_;
   uint8_t id_; // from 0
   bool blinking_ = false;
};

// Both ids write the same two bits; they differ only in the traces. The CPLD blinks this LED.
class CelXcvrCPLD::SystemLed : public Led {
 public:
   using Led::Led;
   pl_status setLightSetting( pl_led_status status ) override;
};

// The LED of a power supply. A bit of 0 lights it. It blinks in software.
class CelXcvrCPLD::PsuLed : public Led {
 public:
   PsuLed( CelXcvrCPLD *cpld, uint8_t id ) : Led( cpld, id ) { usesBlinkTimer = true; }
   pl_status setLightSetting( pl_led_status status ) override;
};

// The QSFP CPLD, ports 1 to 32.
class KeltQCPLD : public CelXcvrCPLD {
 public:
   using CelXcvrCPLD::CelXcvrCPLD;
   // "xcvrPoll" (with any value: polled), "type" ("gpio": a plain device for register GPIOs).
   static Component::HardwareDevice *create( const DriverArgs &args, Ham::Ham *ham );
   void init() override;
   Component::LogicalDevice::QsfpXcvr *newQsfpXcvr( XcvrId id, const DriverArgs &args ) override;

   static const Limits qsfpRegisterLimits;
   static const Registers qsfpRegisterMap;
   static const Registers qsfpPortLedsRegMap;
};

// The SFP CPLD, SFP ports 1 to 48 and QSFP ports 1 to 6.
class KeltSCPLD : public CelXcvrCPLD {
 public:
   using CelXcvrCPLD::CelXcvrCPLD;
   // The same arguments as KeltQCPLD.
   static Component::HardwareDevice *create( const DriverArgs &args, Ham::Ham *ham );
   void init() override;
   Component::LogicalDevice::SfpXcvr *newSfpXcvr( XcvrId id, const DriverArgs &args ) override;
   Component::LogicalDevice::QsfpXcvr *newQsfpXcvr( XcvrId id, const DriverArgs &args ) override;

   static const Limits sfpRegisterLimits;
   static const Registers sfpRegisterMap;
   static const Registers qsfpRegisterMap;
   static const Registers qsfpPortLedsRegMap;
};

} // namespace Drivers
