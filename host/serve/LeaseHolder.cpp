#include "host/serve/LeaseHolder.h"

#include "smbus/Control.pb.h"

#include <boost/asio/post.hpp>
#include <spdlog/spdlog.h>

namespace Host {

LeaseHolder::LeaseHolder( boost::asio::io_context &loop, const ServerAccounts &accounts,
                          const Lease &lease, Handlers handlers )
   : accounts_( accounts ), lease_( lease ), handlers_( std::move( handlers ) ), timer_( loop ) {
   boost::asio::post( loop, [this] { renew(); } );
}

void LeaseHolder::renew() {
   if ( const auto request = lease_.renewal( handlers_.inControl(), Clock::now() );
        request && !asks_ ) {
      asks_ = true;
      accounts_.askFor( *request,
                        [this]( const SmbusControl::Response &response, const std::string &error ) {
                           asks_ = false;
                           answered( response, error );
                        } );
   }
   timer_.expires_after( Lease::period );
   timer_.async_wait( [this]( const auto &failure ) {
      if ( !failure )
         renew();
   } );
}

void LeaseHolder::answered( const SmbusControl::Response &response, const std::string &error ) {
   if ( !error.empty() && error != error_ )
      spdlog::warn( "the server does not watch over the board: {}", error );
   else if ( error.empty() && !isHeld_ )
      spdlog::info( "the server sets the board's safe state when it does not hear of this host "
                    "for {} s",
                    lease_.time() / std::chrono::seconds( 1 ) );
   isHeld_ = error.empty();
   error_ = error;
   if ( response.lease().ran() )
      handlers_.ran();
}

} // namespace Host
