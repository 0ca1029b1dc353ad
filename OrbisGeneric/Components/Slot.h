// A slot for a pluggable power supply or fan module.
#pragma once

#include "OrbisGeneric/Components/Record.h"

#include <map>
#include <string>

namespace Component::LogicalDevice {

class Slot {
 public:
   using DriverSpecificArgs = std::map<std::string, std::string>;

   pl_slot record_{ nullptr, &ops_, this };

   Slot() = default;
   // index is from 0, slotArgs are the driver arguments, text is the device-argument document. The
   // slot keeps the pointer to text.
   Slot( uint8_t index, DriverSpecificArgs slotArgs, const char *text )
      : index_( index ), slotArgs_( std::move( slotArgs ) ), jsonText_( text ) {}
   virtual ~Slot() = default;
   // Returns PL_STATUS_OK and the module's description line; the caller frees it with free().
   virtual pl_status getPresence( char **fdl ) = 0;

   static pl_status getPresenceCallback( pl_slot *slot, char **fdl );
   static const pl_slot_ops ops_;

 protected:
   uint8_t index_ = 0;
   DriverSpecificArgs slotArgs_;
   const char *jsonText_ = nullptr;
};

static_assert( isTableSize<pl_slot_ops>( 8 ) );

} // namespace Component::LogicalDevice
