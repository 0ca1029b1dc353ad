// A slot for a pluggable power supply or fan module.
#pragma once

#include "OrbisGeneric/Components/Record.h"

namespace Component::LogicalDevice {

class Slot {
 public:
   pl_slot record_{ nullptr, &ops_, this };

   virtual ~Slot() = default;
   // Hands out the module's description line, malloc'd, with PL_STATUS_OK.
   virtual pl_status getPresence( char **fdl ) = 0;

   static pl_status getPresenceCallback( pl_slot *slot, char **fdl );
   static const pl_slot_ops ops_;
};

static_assert( isTableSize<pl_slot_ops>( 8 ) );

} // namespace Component::LogicalDevice
