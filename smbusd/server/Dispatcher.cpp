#include "smbusd/server/Dispatcher.h"

#include "smbus/Decode.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>

namespace Smbusd {

Dispatcher::Dispatcher( Executors executors, const Bus::Clock &clock,
                        std::chrono::milliseconds bound, Observer observer )
   : clock_( clock ), bound_( bound ), observer_( std::move( observer ) ) {
   for ( auto &[id, executor] : executors )
      busses_.try_emplace( id, std::move( executor ), clock );
}

bool Dispatcher::stop( std::chrono::milliseconds patience ) {
   const auto end = std::chrono::steady_clock::now() + patience;
   for ( auto &[id, root] : busses_ )
      root.turns.stop();
   bool idle = true;
   for ( auto &[id, root] : busses_ )
      idle &= root.turns.idleBy( end );
   return idle;
}

Dispatcher::Root &Dispatcher::rootOf( const Bus::Transaction &transaction ) {
   const auto refuse = [&]( std::string_view reason ) {
      throw Bus::Refused( describe( transaction, 0, reason ) );
   };
   const auto found = busses_.find( transaction.bus );
   if ( found == busses_.end() )
      refuse( Bus::noSuchBus );
   Root &root = found->second;
   if ( const auto since = root.turns.busySince(); since && clock_.now() - *since > 2 * bound_ )
      refuse( fmt::format( "the bus is stuck: a transaction has been running for {} ms",
                           ( clock_.now() - *since ) / std::chrono::milliseconds( 1 ) ) );
   return root;
}

std::vector<KnownBus> Dispatcher::accounts() const {
   std::vector<KnownBus> accounts;
   for ( const auto &[id, root] : busses_ )
      if ( const BusAccount *account = root.executor->account() )
         accounts.push_back( { account, root.executor->quarantine() } );
   return accounts;
}

void Dispatcher::run( Root &root, Exchange &exchange, const Peer &peer, Bus::Clock::Time arrived ) {
   BusAccount *const account = root.executor->account();
   const Bus::Clock::Time begun = observer_ ? clock_.now() : arrived;
   if ( account )
      account->begin( peer );
   root.executor->run( exchange.transaction, exchange.response );
   const Bus::Clock::Time ended = clock_.now();
   if ( account )
      account->end( exchange.response.failed(), ended - arrived );
   if ( observer_ )
      observer_( exchange.request, exchange.response, begun, ended - begun );
}

// False when there is no turn for the peer.
bool Dispatcher::runInTurn( Exchange &exchange, const Peer &peer, const Next &next ) {
   Root &root = rootOf( exchange.transaction );
   const Bus::Clock::Time arrived = clock_.now();
   if ( !root.turns.begin( peer, arrived ) )
      return false;
   const auto end = [&root]( const void * ) { root.turns.end(); };
   const std::unique_ptr<const void, decltype( end )> turn( &root, end );
   run( root, exchange, peer, arrived );
   while ( next && next( exchange ) ) {
      exchange.response.Clear();
      Bus::decode( exchange.request, bound_, exchange.transaction );
      run( root, exchange, peer, arrived );
   }
   return true;
}

bool Dispatcher::carryOut( Exchange &exchange, const Peer &peer, const Gate *gate,
                           const Next &next ) {
   exchange.response.Clear();
   try {
      Bus::decode( exchange.request, bound_, exchange.transaction );
      if ( exchange.transaction.transfers.empty() )
         return true;
      if ( gate )
         gate->check( exchange.transaction, peer );
      if ( !runInTurn( exchange, peer, next ) )
         return false;
      if ( gate )
         gate->passed( exchange.transaction, exchange.response, peer );
      if ( exchange.response.failed() )
         spdlog::debug( "failed: {}", exchange.response.error() );
   } catch ( const Bus::Refused &reason ) {
      spdlog::warn( "refused: {}", reason.what() );
      exchange.response = Bus::failure( reason.what() );
      if ( observer_ )
         observer_( exchange.request, exchange.response, clock_.now(), Bus::Clock::Time( 0 ) );
   } catch ( const std::system_error &lacking ) {
      spdlog::warn( "refused: {}", lacking.what() );
      exchange.response = Bus::failure( lacking.what() );
   }
   return true;
}

} // namespace Smbusd
