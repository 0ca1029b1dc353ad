#include "host/serve/LastLoads.h"

#include "smbus/Control.pb.h"

#include <boost/asio/steady_timer.hpp>
#include <utility>

namespace Host {

struct LastLoads::Waiting {
   Waiting( boost::asio::io_context &loop, Answer toCall )
      : limit( loop ), answer( std::move( toCall ) ) {}

   void call( const KnownLoads &known ) {
      limit.cancel();
      if ( const auto once = std::exchange( answer, {} ) )
         once( known );
   }

   boost::asio::steady_timer limit;
   Answer answer;
};

void LastLoads::ask( Answer answer ) {
   const auto waiting = std::make_shared<Waiting>( loop_, std::move( answer ) );
   waiting_.push_back( waiting );
   waiting->limit.expires_after( patience_ );
   waiting->limit.async_wait( [this, waiting]( const auto &failure ) {
      if ( !failure )
         waiting->call( known() );
   } );
   if ( std::exchange( asks_, true ) )
      return;
   accounts_.askLoads( [this]( const SmbusControl::Response &response, const std::string &error ) {
      if ( error.empty() ) {
         loads_ = std::make_shared<const SmbusControl::Response>( response );
         at_ = Clock::now();
      }
      answered();
   } );
}

void LastLoads::answered() {
   asks_ = false;
   for ( const auto &waiting : std::exchange( waiting_, {} ) )
      waiting->call( known() );
}

KnownLoads LastLoads::known() const {
   return { loads_, std::chrono::duration<double>( Clock::now() - at_ ).count() };
}

} // namespace Host
