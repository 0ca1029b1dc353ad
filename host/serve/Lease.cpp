#include "host/serve/Lease.h"

#include "smbus/Control.pb.h"

#include <algorithm>

namespace Host {

namespace {

constexpr auto newStart = std::chrono::seconds( 3 ); // of the plug-in's process

} // namespace

Lease::Lease( const BoardFiles::SafeState &state, Clock::duration limit )
   : state_( state ),
     time_( std::max<Clock::duration>( std::chrono::seconds( state.lease ), limit + newStart ) ) {}

std::optional<SmbusControl::Request> Lease::renewal( std::optional<Time> inControl,
                                                     Time now ) const {
   if ( !inControl || now - *inControl >= time_ )
      return {};
   SmbusControl::Request request;
   SmbusControl::Lease &lease = *request.mutable_lease();
   const auto left = *inControl + time_ + slack - now;
   lease.set_milliseconds( static_cast<uint32_t>( left / std::chrono::milliseconds( 1 ) ) );
   for ( const BoardFiles::SafeRegister &from : state_.writes ) {
      SmbusControl::SafeWrite &to = *lease.add_write();
      to.set_bus( from.chip.bus );
      to.set_path( from.chip.path );
      to.set_address( from.chip.address );
      to.set_register_( from.number );
      to.set_value( from.value );
      if ( from.mask )
         to.set_mask( *from.mask );
   }
   return request;
}

} // namespace Host
