#include "OrbisGeneric/Drivers/PsuSlot.h"

#include "OrbisGeneric/Assert.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/Drivers/PmbusMap.h"
#include "OrbisGeneric/Ham/Ham.h"

#include <cstdlib>
#include <cstring>

namespace Drivers {

Component::HardwareDevice *PsuSlot::create( const DriverArgs &, Ham::Ham * ) {
   PL_TRACE( 0, "Creating Pmbus Device" ); // the same text as the Pmbus driver
   return new PsuSlot;
}

Component::LogicalDevice::Slot *PsuSlot::newSlot( const DriverArgs &args ) {
   auto it = args.driverArgs.find( "psuId" );
   if ( it == args.driverArgs.end() ) {
      PL_TRACE( 0, "Error: expected 'psuId' in slot driverArgs" );
      return nullptr;
   }
   const int psuId = std::stoi( it->second );
   assert( psuId == 1 || psuId == 2 );
   PL_TRACE( 5, "Creating new PsuSlot for Psu id %hhu", static_cast<uint8_t>( psuId ) );
   return new Slot( this, static_cast<uint8_t>( psuId - 1 ), args.driverArgs, args.jsonText );
}

PsuSlot::Slot::Slot( PsuSlot *parent, uint8_t index, DriverSpecificArgs slotArgs, const char *text )
   : Component::LogicalDevice::Slot( index, std::move( slotArgs ), text ), parent_( parent ),
     fdl_( "" ) {
   const std::string type = slotArgs_["identificationType"];
   if ( type == "ipmi" )
      identificationType_ = Ipmi;
   else if ( type != "pmbus" )
      PL_TRACE( 0, "Invalid identification type: '%s'", type.c_str() );
   for ( int n = 1;; ++n ) {
      auto model = slotArgs_.find( "model_" + std::to_string( n ) );
      if ( model == slotArgs_.end() )
         break;
      const std::string psuFdlKey = "psuFdl_" + std::to_string( n );
      assert( slotArgs_.find( psuFdlKey ) != slotArgs_.end() );
      templates_[model->second] = slotArgs_[psuFdlKey];
   }
}

PsuSlot::Slot::~Slot() { free( cachedFdl_ ); }

pl_status PsuSlot::Slot::readSerialAndModelPmbus( std::string &serial, std::string &model ) {
   PL_TRACE( 7, "%s", __func__ );
   Ham::Ham *ham = parent_->ham_;
   // The first byte of a block is its length. The second read has this length and starts with the
   // length byte again.
   ham->prepare();
   auto modelId = ham->addRead8( PmbusMap::MFR_MODEL );
   auto serialId = ham->addRead8( PmbusMap::MFR_SERIAL );
   if ( pl_status status = ham->execute() )
      return status;
   const auto modelLength = static_cast<uint8_t>( ham->get8( modelId ) + 1 );
   const auto serialLength = static_cast<uint8_t>( ham->get8( serialId ) + 1 );

   ham->prepare();
   modelId = ham->addRead( PmbusMap::MFR_MODEL, modelLength );
   serialId = ham->addRead( PmbusMap::MFR_SERIAL, serialLength );
   if ( pl_status status = ham->execute() )
      return status;
   model = ham->getBlock( modelId, modelLength );
   serial = ham->getBlock( serialId, serialLength );
   model.erase( 0, 1 );
   serial.erase( 0, 1 );
   model = trim( model );
   return PL_STATUS_OK;
}

// IPMI Platform Management FRU Information Storage Definition v1.0, revision 1.2: "Common Header
// Format" (byte 4: product info area, in multiples of 8 bytes), "Product Info Area Format",
// "TYPE/LENGTH BYTE FORMAT" (bits 7-6: 3 is 8-bit ASCII; 5-0: length).
pl_status PsuSlot::Slot::readSerialAndModelIpmi( std::string &serial, std::string &model ) {
   constexpr uint8_t productInfoOffset = 4;
   constexpr unsigned firstField = 3; // after version, length and language code
   std::string *const fields[] = {
      nullptr, // manufacturer name
      &model,  // product name
      nullptr, // part/model number
      nullptr, // product version
      &serial, // product serial number
   };

   Ham::Ham *ham = parent_->ham_;
   uint8_t offset = 0;
   if ( pl_status status = ham->read8( productInfoOffset, &offset ) ) {
      PL_TRACE( 0, "Error reading product info offset" );
      return status;
   }
   auto position = static_cast<uint8_t>( offset * 8 + firstField );
   for ( std::string *field : fields ) {
      uint8_t typeLength = 0;
      if ( pl_status status = ham->read8( position, &typeLength ) ) {
         PL_TRACE( 0, "Error reading type/length byte" );
         return status;
      }
      const unsigned type = typeLength >> 6;
      assert( type == 3 && "Expected type code 3 (8-bit ASCII)" );
      const unsigned length = typeLength & 0x3F;
      if ( field )
         if ( pl_status status =
                 ham->read( static_cast<uint8_t>( position + 1 ), length, field ) ) {
            PL_TRACE( 0, "Error reading product info field" );
            return status;
         }
      position = static_cast<uint8_t>( position + 1 + length );
   }
   model = trim( model );
   return PL_STATUS_OK;
}

pl_status PsuSlot::Slot::getPresence( char **fdl ) {
   PL_TRACE( 7, "%s", __func__ );
   std::string serial, model;
   const pl_status status = identificationType_ == Ipmi ? readSerialAndModelIpmi( serial, model )
                                                        : readSerialAndModelPmbus( serial, model );
   if ( status != PL_STATUS_OK || serial.empty() || model.empty() ) {
      PL_TRACE( 7, "Failed to read PSU info '%s' '%s'", serial.c_str(), model.c_str() );
      forget();
      return PL_STATUS_NOT_MANAGED;
   }
   if ( cachedFdl_ && serial == cachedSerial_ && model == cachedModel_ ) {
      PL_TRACE( 7, "Using cached fdl" );
      return copyForHost( cachedFdl_, fdl );
   }
   PL_TRACE( 0, "PSU serialNum = '%s'", serial.c_str() );
   PL_TRACE( 0, "PSU modelName = '%s'", model.c_str() );
   auto known = templates_.find( model );
   if ( known == templates_.end() ) {
      PL_TRACE( 0, "Unknown modelName. PSU is unmanaged" );
      forget();
      return PL_STATUS_NOT_MANAGED;
   }
   fdl_ = FormatFdl( known->second );
   fdl_.start();
   fdl_.set( "serialNum", serial );
   const char *text = fdl_.charPtr();
   forget();
   if ( pl_status failure = copyForHost( text, fdl ) )
      return failure;
   cachedFdl_ = strdup( text );
   cachedSerial_ = serial;
   cachedModel_ = model;
   return PL_STATUS_OK;
}

pl_status PsuSlot::Slot::copyForHost( const char *text, char **fdl ) {
   char *copy = strdup( text );
   if ( !copy ) {
      PL_TRACE( 0, "Error: PsuSlot::Slot strdup failed" );
      return PL_STATUS_TRANSACTION;
   }
   *fdl = copy;
   return PL_STATUS_OK;
}

void PsuSlot::Slot::forget() {
   free( cachedFdl_ );
   cachedFdl_ = nullptr;
   cachedSerial_.clear();
   cachedModel_.clear();
}

} // namespace Drivers
