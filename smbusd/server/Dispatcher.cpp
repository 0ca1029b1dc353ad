#include "server/Dispatcher.h"

#include "Decode.h"

#include <boost/asio/post.hpp>
#include <fmt/format.h>
#include <spdlog/spdlog.h>

namespace Smbusd {

Dispatcher::Dispatcher( Busses busses, const Clock &clock, std::chrono::milliseconds bound )
   : bound_( bound ) {
   for ( auto &[id, bus] : busses )
      workers_.try_emplace( id, std::move( bus ), clock );
}

Dispatcher::~Dispatcher() {
   for ( auto &[id, worker] : workers_ ) {
      if ( worker.thread )
         worker.thread->stop();
   }
   for ( auto &[id, worker] : workers_ ) {
      if ( worker.thread )
         worker.thread->join();
   }
}

Dispatcher::Worker &Dispatcher::workerOf( const Transaction &transaction ) {
   const auto found = workers_.find( transaction.bus );
   if ( found == workers_.end() )
      throw Refused( fmt::format( "request 1 of {}: {} on {}: {}", transaction.transfers.size(),
                                  describe( transaction.transfers.front() ),
                                  toString( transaction.bus ), noSuchBus ) );
   if ( !found->second.thread )
      found->second.thread.emplace( 1 );
   return found->second;
}

void Dispatcher::carryOut( const Smbus::TransactionRequest &message,
                           std::shared_ptr<const Client> client, Answer answer ) {
   try {
      Transaction transaction = decode( message, bound_ );
      if ( transaction.transfers.empty() )
         return answer( {} );
      Worker &worker = workerOf( transaction );
      boost::asio::post( *worker.thread,
                         [&worker, transaction = std::move( transaction ),
                          client = std::move( client ), answer = std::move( answer )] {
                            if ( client->gone )
                               return;
                            Smbus::TransactionResponse response = worker.runner.run( transaction );
                            if ( response.failed() )
                               spdlog::debug( "failed: {}", response.error() );
                            answer( std::move( response ) );
                         } );
   } catch ( const Refused &reason ) {
      spdlog::warn( "refused: {}", reason.what() );
      answer( failure( reason.what() ) );
   }
}

} // namespace Smbusd
