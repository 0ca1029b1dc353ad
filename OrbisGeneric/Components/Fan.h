// A fan: reads and sets its speed in rpm.
#pragma once

#include "OrbisGeneric/Components/Record.h"

namespace Component::LogicalDevice {

class Fan {
 public:
   pl_fan record_{ nullptr, &ops_, this };

   virtual ~Fan() = default;
   virtual pl_status getRpm( int *rpm ) = 0;
   virtual pl_status setRpm( int rpm ) = 0;

   static pl_status getRpmCallback( pl_fan *fan, int *rpm );
   static pl_status setRpmCallback( pl_fan *fan, int rpm );
   static const pl_fan_ops ops_;
};

static_assert( isTableSize<pl_fan_ops>( 16 ) );

} // namespace Component::LogicalDevice
