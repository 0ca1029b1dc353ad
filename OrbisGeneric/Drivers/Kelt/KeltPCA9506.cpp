#include "OrbisGeneric/Drivers/Kelt/KeltPCA9506.h"

#include "OrbisGeneric/Assert.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"

#include <cstdlib>
#include <cstring>

namespace Drivers {

namespace {

// PCA9505/06 data sheet, "Register definitions": IP0, OP0, IOC0.
constexpr uint8_t firstInput = 0x00, firstOutput = 0x08, firstConfig = 0x18;
constexpr int banks = 5;
constexpr unsigned cacheSeconds = 2;
constexpr uint8_t pinConfig[banks] = { 0xFF, 0xFF, 0x7F, 0x1B, 0x80 }; // 1: input

// The first of the two LED pins of each fan.
constexpr int ledPin[] = { 31, 29, 35, 37, 33 };

constexpr unsigned firstPresencePin = 10, firstAirflowPin = 15;

} // namespace

Component::HardwareDevice *KeltPCA9506::create( const DriverArgs &, Ham::Ham * ) {
   PL_TRACE( 0, "Creating Kelt PCA9506 Device" );
   return new KeltPCA9506;
}

void KeltPCA9506::init() {
   GPIOExpander::init( banks, cacheSeconds, firstInput, firstOutput, firstConfig );
   if ( writeConfig( pinConfig ) != PL_STATUS_OK )
      PL_TRACE( 0, "Error: failed to write PCA9506 pin configuration" );
}

// When the second bank can't be read, the first pin is written all the same: a pin that stayed
// pending would go high with the next change of an LED.
pl_status KeltPCA9506::poweroff() {
   if ( pl_status status = writeBit( 2, 7, true ) )
      return status;
   writeBit( 3, 2, true );
   return save();
}

Component::LogicalDevice::Led *KeltPCA9506::newLed( const DriverArgs &args ) {
   assert( args.driverArgs.find( "id" ) != args.driverArgs.end() );
   const int fanId = std::stoi( args.driverArgs.at( "id" ) );
   PL_TRACE( 5, "creating new PCA9506 LED for fan id %hhu", static_cast<uint8_t>( fanId ) );
   assert( fanId >= 1 && fanId <= 5 );
   return new FanLed( this, static_cast<uint8_t>( fanId - 1 ) );
}

Component::LogicalDevice::Slot *KeltPCA9506::newSlot( const DriverArgs &args ) {
   assert( args.driverArgs.find( "fanId" ) != args.driverArgs.end() );
   const int fanId = std::stoi( args.driverArgs.at( "fanId" ) );
   assert( fanId >= 1 && fanId <= 5 );
   PL_TRACE( 5, "Creating new KeltPCA9506 Slot for Fan id %d", fanId );
   return new FanSlot( this, fanId, args.driverArgs, args.jsonText );
}

KeltPCA9506::FanLed::FanLed( KeltPCA9506 *expander, uint8_t fan )
   : expander_( expander ), fan_( fan ), pinA( ledPin[fan] ), pinB( pinA + 1 ) {
   usesBlinkTimer = true;
}

// When an output bank can't be read, writeBit traces it and nothing else happens.
void KeltPCA9506::FanLed::setPins( bool a, bool b ) {
   expander_->writeBit( pinA, a );
   expander_->writeBit( pinB, b );
}

pl_status KeltPCA9506::FanLed::setLightSetting( pl_led_status status ) {
   // Outside the trace: an unknown setting stops the process in a host without trace, too.
   const char *const setting = getLedStatusString( status );
   PL_TRACE( 6, "Setting PCA9506 led %d to %s", fan_, setting );
   if ( blinking_ && status != PL_LED_BEACON ) {
      notifyList_.remove( this );
      blinking_ = false;
   }
   switch ( status ) {
   case PL_LED_OFF:
      setLedOff();
      break;
   case PL_LED_GOOD:
      setLedGreen();
      break;
   case PL_LED_WARNING:
      setLedAmber();
      break;
   case PL_LED_BAD:
      setLedRed();
      break;
   case PL_LED_BEACON:
      if ( blinking_ )
         return PL_STATUS_OK;
      notifyOnBlink( this );
      blinking_ = true;
      setLedOff();
      break;
   default:
      PL_TRACE( 6, "led %hhu was given an unexpected setting %d", fan_, status );
      return PL_STATUS_UNSUPPORTED;
   }
   return expander_->save();
}

bool KeltPCA9506::FanLed::handleBlinkTimer( bool on ) {
   on ? setLedRed() : setLedOff();
   const pl_status status = expander_->save();
   assert( status == PL_STATUS_OK );
   return true;
}

KeltPCA9506::FanSlot::FanSlot( KeltPCA9506 *expander, int fanId, DriverSpecificArgs slotArgs,
                               const char *text )
   : Component::LogicalDevice::Slot( static_cast<uint8_t>( fanId - 1 ), std::move( slotArgs ),
                                     text ),
     expander_( expander ), fanId_( fanId ), fdl_( "" ) {
   auto offsetIt = slotArgs_.find( "presenceBitOffset" );
   assert( offsetIt != slotArgs_.end() );
   auto fdlIt = slotArgs_.find( "fanFdl" );
   assert( fdlIt != slotArgs_.end() );
   auto f2bIt = slotArgs_.find( "rpmF2B" );
   assert( f2bIt != slotArgs_.end() );
   auto b2fIt = slotArgs_.find( "rpmB2F" );
   assert( b2fIt != slotArgs_.end() );
   auto modelIt = slotArgs_.find( "modelName" );
   assert( modelIt != slotArgs_.end() );
   fdl_ = FormatFdl( fdlIt->second );
   const auto offset = static_cast<unsigned>( std::stoi( offsetIt->second ) );
   presencePin = static_cast<int>( offset + firstPresencePin );
   airflowPin = static_cast<int>( offset + firstAirflowPin );
}

KeltPCA9506::FanSlot::~FanSlot() { free( cachedFdl_ ); }

pl_status KeltPCA9506::FanSlot::getPresence( char **fdl ) {
   bool absent = false;
   if ( pl_status status = expander_->readBit( presencePin, &absent ) ) {
      PL_TRACE( 0, "Error: status %d reading fan %d presence bit", status, fanId_ );
      return status;
   }
   if ( absent ) {
      free( cachedFdl_ );
      cachedFdl_ = nullptr;
      return PL_STATUS_NOT_MANAGED;
   }
   bool frontToBack = false;
   if ( pl_status status = expander_->readBit( airflowPin, &frontToBack ) ) {
      PL_TRACE( 0, "Error: status %d reading fan %d F2B bit", status, fanId_ );
      return status;
   }
   if ( cachedFdl_ && cachedAirflow_ == frontToBack ) {
      PL_TRACE( 5, "Using cached fdl for fan %d", fanId_ );
      return copyForHost( cachedFdl_, fdl );
   }
   fdl_.start();
   fdl_.set( "airflowDirection", frontToBack ? "frontToBackAirflow" : "backToFrontAirflow" );
   fdl_.set( "maxRpm", slotArgs_.at( frontToBack ? "rpmF2B" : "rpmB2F" ) );
   fdl_.set( "modelName", slotArgs_.at( "modelName" ) );
   const char *text = fdl_.charPtr();
   if ( pl_status status = copyForHost( text, fdl ) )
      return status;
   PL_TRACE( 5, "fan %d fdl: %s", fanId_, text );
   free( cachedFdl_ );
   cachedFdl_ = strdup( text );
   cachedAirflow_ = frontToBack;
   return PL_STATUS_OK;
}

pl_status KeltPCA9506::FanSlot::copyForHost( const char *text, char **fdl ) {
   char *copy = strdup( text );
   if ( !copy ) {
      PL_TRACE( 0, "Error: KeltPCA9506::FanSlot strdup failed" );
      return PL_STATUS_TRANSACTION;
   }
   *fdl = copy;
   return PL_STATUS_OK;
}

} // namespace Drivers
