#include "OrbisGeneric/Drivers/Kelt/CelesticaCPLD.h"

#include "OrbisGeneric/Assert.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/Drivers/Kelt/CelesticaXcvr.h"
#include "OrbisGeneric/Ham/Ham.h"

namespace Drivers {

using namespace CelesticaCPLDMap;

namespace {

constexpr uint32_t pollMilliseconds = 1000;

// Makes a plain device or a CPLD, depending on the "type" argument.
template <typename Cpld>
Component::HardwareDevice *createCpld( const DriverArgs &args ) {
   auto type = args.driverArgs.find( "type" );
   if ( type != args.driverArgs.end() && type->second == "gpio" )
      return new Component::HardwareDevice;
   return new Cpld( args.driverArgs.count( "xcvrPoll" ) != 0 );
}

} // namespace

Component::HardwareDevice *KeltQCPLD::create( const DriverArgs &args, Ham::Ham * ) {
   PL_TRACE( 5, "Creating KeltQCPLD device" );
   return createCpld<KeltQCPLD>( args );
}

void KeltQCPLD::init() {
   PL_TRACE( 5, "KeltQCPLD init function" );
   if ( poll_ ) {
      registerMaps_ = { &qsfpRegisterMap, nullptr };
      CelXcvrCPLD::init();
   }
   portLeds_ = &qsfpPortLedsRegMap;
   setQsfpLedsRegister();
}

Component::LogicalDevice::QsfpXcvr *KeltQCPLD::newQsfpXcvr( XcvrId id, const DriverArgs & ) {
   assert( id >= 1 && id <= 32 );
   PL_TRACE( 0, "creating new QsfpXcvr for id %hhu", static_cast<uint8_t>( id ) );
   uint8_t registerIndex = 0, bitpos = 0;
   computeOffsetAndBitpos( qsfpRegisterLimits, id - 1, registerIndex, bitpos );
   return new QsfpXcvr( { static_cast<uint8_t>( id - 1 ), registerIndex, bitpos, this } );
}

Component::HardwareDevice *KeltSCPLD::create( const DriverArgs &args, Ham::Ham * ) {
   PL_TRACE( 5, "Creating KeltSCPLD device" );
   return createCpld<KeltSCPLD>( args );
}

void KeltSCPLD::init() {
   PL_TRACE( 5, "KeltSCPLD init function" );
   if ( poll_ ) {
      registerMaps_ = { &qsfpRegisterMap, &sfpRegisterMap };
      CelXcvrCPLD::init();
   }
   portLeds_ = &qsfpPortLedsRegMap;
   setQsfpLedsRegister();
}

Component::LogicalDevice::SfpXcvr *KeltSCPLD::newSfpXcvr( XcvrId id, const DriverArgs & ) {
   assert( id >= 1 && id <= 48 );
   PL_TRACE( 5, "creating new SfpXcvr for id %hhu", static_cast<uint8_t>( id ) );
   uint8_t registerIndex = 0, bitpos = 0;
   computeOffsetAndBitpos( sfpRegisterLimits, id - 1, registerIndex, bitpos );
   return new SfpXcvr( { static_cast<uint8_t>( id - 1 ), registerIndex, bitpos, this } );
}

Component::LogicalDevice::QsfpXcvr *KeltSCPLD::newQsfpXcvr( XcvrId id, const DriverArgs & ) {
   assert( id >= 1 && id <= 6 );
   PL_TRACE( 5, "creating new QsfpXcvr for id %hhu", static_cast<uint8_t>( id ) );
   const auto port = static_cast<uint8_t>( id - 1 );
   return new QsfpXcvr( { port, 0, port, this } );
}

void CelXcvrCPLD::init() {
   PL_TRACE( 0, "CelXcvrCPLD::init()" );
   if ( !poll_ )
      return;
   updateRegisterCache();
   pollInterval = pollMilliseconds;
   assert( pollStart() );
}

void CelXcvrCPLD::pollCallback() {
   if ( poll_ )
      updateRegisterCache();
}

bool CelXcvrCPLD::updateRegisterCache() {
   ham_->prepare();
   Ham::Ham::ResponseId last = 0;
   uint32_t count = 0;
   for ( const Registers *map : registerMaps_ ) {
      if ( !map )
         continue;
      for ( uint16_t reg : *map ) {
         last = ham_->addRead8( reg );
         ++count;
      }
   }
   if ( ham_->execute() != PL_STATUS_OK ) {
      PL_TRACE( 0, "Failed to poll information for CelXcvrCPLD" );
      return false;
   }
   auto id = last - count + 1; // ids are consecutive
   for ( const Registers *map : registerMaps_ ) {
      if ( !map )
         continue;
      for ( uint16_t reg : *map )
         registerCache_[reg] = ham_->get8( id++ );
   }
   PL_TRACE( 6, "Register cache updated for CelXcvrCPLD" );
   return true;
}

void CelXcvrCPLD::setQsfpLedsRegister() {
   for ( uint16_t reg : *portLeds_ )
      if ( ham_->write8( reg, 0xFF, false ) != PL_STATUS_OK )
         PL_TRACE( 0, "Failed to write QSFP Port Error LED Register: %hhu",
                   static_cast<uint8_t>( reg ) );
}

void CelXcvrCPLD::computeOffsetAndBitpos( const Limits &limits, uint32_t port,
                                          uint8_t &registerIndex, uint8_t &bitpos ) {
   if ( limits.empty() )
      return;
   uint32_t first = 0; // first port of the group
   size_t index = 0;
   while ( index < limits.size() && limits[index] <= port )
      first = limits[index++];
   registerIndex = static_cast<uint8_t>( registerIndex + index );
   if ( index < limits.size() )
      bitpos = static_cast<uint8_t>( port - first );
}

pl_status CelXcvrCPLD::getRegisterBit( uint16_t reg, uint8_t bit, int *value, bool refresh ) {
   if ( refresh )
      if ( pl_status status = ham_->read8( reg, &registerCache_[reg] ) )
         return status;
   *value = registerCache_[reg] >> bit & 1;
   return PL_STATUS_OK;
}

pl_status CelXcvrCPLD::setRegisterBit( uint16_t reg, uint8_t bit, int value, bool readFirst ) {
   uint8_t byte = 0;
   if ( !readFirst )
      byte = registerCache_[reg];
   else if ( pl_status status = ham_->read8( reg, &byte ) )
      return status;
   const unsigned mask = 1u << bit;
   byte = static_cast<uint8_t>( value ? byte | mask : byte & ~mask );
   if ( pl_status status = ham_->write8( reg, byte, false ) )
      return status;
   registerCache_[reg] = byte;
   return PL_STATUS_OK;
}

Component::LogicalDevice::Led *CelXcvrCPLD::newLed( const DriverArgs &args ) {
   assert( args.driverArgs.find( "id" ) != args.driverArgs.end() );
   const int ledId = std::stoi( args.driverArgs.at( "id" ) );
   assert( ledId >= 1 && ledId <= 2 );
   auto it = args.driverArgs.find( "type" );
   assert( it != args.driverArgs.end() );
   const auto id = static_cast<uint8_t>( ledId );
   const auto index = static_cast<uint8_t>( ledId - 1 );
   if ( it->second != "status" && it->second != "psu" ) {
      PL_TRACE( 0, "Error: failed to find driverArg for KeltCPLD::newLed" );
      return nullptr;
   }
   PL_TRACE( 5, "creating new KeltCPLD %s LED with id %hhu", it->second.c_str(), id );
   if ( it->second == "status" )
      return new SystemLed( this, index );
   return new PsuLed( this, index );
}

pl_status CelXcvrCPLD::Led::readLeds( uint8_t *leds ) {
   const pl_status status = cpld_->ham_->read8( ledRegister, leds );
   if ( status != PL_STATUS_OK )
      PL_TRACE( 0, "Error reading CPLD led register" );
   return status;
}

// A tick that fails takes the LED off the blink list, but the LED still counts as blinking: only
// another setting, and then Beacon again, makes it blink.
bool CelXcvrCPLD::Led::handleBlinkTimer( bool on ) {
   uint8_t leds = 0;
   if ( readLeds( &leds ) != PL_STATUS_OK )
      return false;
   leds &= static_cast<uint8_t>( ~psuLedMask( id_ ) );
   if ( !on )
      leds |= psuLedMask( id_ );
   cpld_->ham_->prepare();
   return cpld_->ham_->write8( ledRegister, leds, false ) == PL_STATUS_OK;
}

pl_status CelXcvrCPLD::SystemLed::setLightSetting( pl_led_status status ) {
   // Outside the trace: an unknown setting stops the process in a host without trace, too.
   const char *const setting = getLedStatusString( status );
   PL_TRACE( 6, "setting CPLD System Led %hhu to %s", id_, setting );
   uint8_t leds = 0;
   if ( pl_status failure = readLeds( &leds ) )
      return failure;
   leds &= static_cast<uint8_t>( ~systemLedMask );
   switch ( status ) {
   case PL_LED_OFF:
   case PL_LED_BAD:
   case PL_LED_UNKNOWN:
      leds |= systemLedOff;
      break;
   case PL_LED_GOOD:
      leds |= systemLedGood;
      break;
   case PL_LED_BEACON:
      leds |= systemLedBeacon;
      break;
   default:
      PL_TRACE( 0, "led %hhu was given an unexpected setting %d", id_, status );
      return PL_STATUS_UNSUPPORTED;
   }
   const pl_status written = cpld_->ham_->write8( ledRegister, leds, false );
   if ( written != PL_STATUS_OK )
      PL_TRACE( 6, "Setting status for KeltCPLD System LED-%hhu failed.", id_ );
   return written;
}

pl_status CelXcvrCPLD::PsuLed::setLightSetting( pl_led_status status ) {
   assert( 0 <= id_ && id_ <= 1 );
   const char *const setting = getLedStatusString( status );
   PL_TRACE( 6, "setting CPLD PSU Led %hhu to %s", id_, setting );
   if ( status != PL_LED_BEACON && blinking_ ) {
      notifyList_.remove( this );
      blinking_ = false;
   }
   uint8_t leds = 0;
   if ( pl_status failure = readLeds( &leds ) )
      return failure;
   const auto lit = static_cast<uint8_t>( leds & ~psuLedMask( id_ ) );
   const auto dark = static_cast<uint8_t>( lit | psuLedMask( id_ ) );
   switch ( status ) {
   case PL_LED_GOOD:
      leds = lit;
      break;
   case PL_LED_OFF:
   case PL_LED_BAD:
      leds = dark;
      break;
   case PL_LED_BEACON:
      if ( blinking_ )
         return PL_STATUS_OK;
      notifyOnBlink( this );
      blinking_ = true;
      return cpld_->ham_->write8( ledRegister, dark, false );
   default:
      PL_TRACE( 0, "led %hhu was given an unexpected setting %d", id_, status );
      return PL_STATUS_UNSUPPORTED;
   }
   const pl_status written = cpld_->ham_->write8( ledRegister, leds, false );
   if ( written != PL_STATUS_OK )
      PL_TRACE( 6, "Setting status for KeltCPLD PSU LED-%hhu failed.", id_ );
   return written;
}

} // namespace Drivers
