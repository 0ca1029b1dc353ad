#include "OrbisGeneric/Drivers/EMC2305.h"

#include "OrbisGeneric/Assert.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/Drivers/EMC2305Map.h"
#include "OrbisGeneric/Ham/Ham.h"

namespace Drivers {

Component::HardwareDevice *EMC2305::create( const DriverArgs &, Ham::Ham * ) {
   PL_TRACE( 0, "Creating EMC2305 Device" );
   return new EMC2305;
}

Component::LogicalDevice::Fan *EMC2305::newFan( const DriverArgs &args ) {
   auto it = args.driverArgs.find( "fanId" );
   assert( it != args.driverArgs.end() );
   const int fanId = std::stoi( it->second );
   PL_TRACE( 5, "Creating new EMC2305 Fan id %hhu", static_cast<uint8_t>( fanId ) );
   assert( fanId >= 1 && fanId <= 5 );
   it = args.driverArgs.find( "maxRpm" );
   assert( it != args.driverArgs.end() );
   const auto maxRpm = static_cast<uint32_t>( std::stoi( it->second ) );
   return new Fan( this, static_cast<uint8_t>( fanId - 1 ), maxRpm, args.driverArgs );
}

EMC2305::Fan::Fan( EMC2305 *emc2305, uint8_t id, uint32_t maxRpm,
                   std::map<std::string, std::string> driverArgs )
   : emc2305_( emc2305 ), id_( id ), maxRpm_( maxRpm ) {
   const auto channel = static_cast<unsigned>( std::stoi( driverArgs["registerOffset"] ) );
   fanSetting_ = static_cast<uint8_t>( EMC2305Map::fanSetting( channel ) );
   fanConfig1_ = static_cast<uint8_t>( EMC2305Map::fanConfig1( channel ) );
   tachLow_ = static_cast<uint8_t>( EMC2305Map::tachLow( channel ) );
   tachHigh_ = static_cast<uint8_t>( EMC2305Map::tachHigh( channel ) );
   uint8_t config1 = 0;
   if ( emc2305->ham_->read8( fanConfig1_, &config1 ) != PL_STATUS_OK ) {
      PL_TRACE( 0, "Error reading config1 register for fan %d", id_ );
      return;
   }
   tachMultiplier_ = EMC2305Map::tachMultiplier( config1 );
   PL_TRACE( 5, "Fan %d tach multipler = %d", id_, tachMultiplier_ );
}

pl_status EMC2305::getFanRpm( Fan *fan, int *rpm ) {
   ham_->prepare();
   const auto lowId = ham_->addRead8( fan->tachLow_ );
   const auto highId = ham_->addRead8( fan->tachHigh_ );
   if ( pl_status status = ham_->execute() )
      return status;
   const uint8_t low = ham_->get8( lowId );
   const uint8_t high = ham_->get8( highId );
   const int count = EMC2305Map::tachCount( high, low );
   if ( count == 0 ) {
      *rpm = 0;
      PL_TRACE( 0, "Error: invalid fan count" );
      return PL_STATUS_DEVICE_FAULT;
   }
   *rpm = fan->tachMultiplier_ * EMC2305Map::rpmTimesCount / count;
   PL_TRACE( 5, "EMC2305::getFanRpm -- id: %d tachLow: %d, tachHigh: %d, count: %d rpm: %d",
             fan->id_, low, high, count, *rpm );
   return PL_STATUS_OK;
}

pl_status EMC2305::setFanRpm( Fan *fan, int rpm ) {
   const auto scaled = static_cast<int32_t>( static_cast<uint32_t>( rpm ) * 255 );
   const int32_t value = scaled / static_cast<int32_t>( fan->maxRpm_ );
   PL_TRACE( 5, "Setting fan %d rpm to %d", fan->id_, rpm );
   const pl_status status = ham_->write8( fan->fanSetting_, static_cast<uint8_t>( value ), false );
   if ( status != PL_STATUS_OK )
      PL_TRACE( 0, "Error: setting fan %d to %d rpm failed with status %d", fan->id_, rpm, status );
   return status;
}

} // namespace Drivers
