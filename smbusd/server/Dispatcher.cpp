#include "smbusd/server/Dispatcher.h"

#include "smbus/Decode.h"

#include <boost/asio/post.hpp>
#include <fmt/format.h>
#include <spdlog/spdlog.h>

namespace Smbusd {

Dispatcher::Dispatcher( Executors executors, const Bus::Clock &clock,
                        std::chrono::milliseconds bound, Observer observer )
   : clock_( clock ), bound_( bound ), observer_( std::move( observer ) ) {
   for ( auto &[id, executor] : executors )
      workers_[id].executor = std::move( executor );
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

bool Dispatcher::stop( std::chrono::milliseconds patience ) {
   std::unique_lock lock( mutex_ );
   stopped_ = true;
   return idle_.wait_for( lock, patience, [this] { return busy_ == 0; } );
}

Dispatcher::Worker &Dispatcher::workerOf( const Bus::Transaction &transaction ) {
   const auto refuse = [&]( std::string_view reason ) {
      throw Bus::Refused( fmt::format(
         "request 1 of {}: {} on {}: {}", transaction.transfers.size(),
         describe( transaction.transfers.front() ), toString( transaction.bus ), reason ) );
   };
   const auto found = workers_.find( transaction.bus );
   if ( found == workers_.end() )
      refuse( Bus::noSuchBus );
   Worker &worker = found->second;
   {
      const std::lock_guard lock( mutex_ );
      if ( const auto since = worker.busySince; since && clock_.now() - *since > 2 * bound_ )
         refuse( fmt::format( "the bus is stuck: a transaction has been running for {} ms",
                              ( clock_.now() - *since ) / std::chrono::milliseconds( 1 ) ) );
   }
   if ( !worker.thread )
      worker.thread.emplace( 1 );
   return worker;
}

void Dispatcher::busyIs( Worker &worker, std::optional<Bus::Clock::Time> since ) {
   const std::lock_guard lock( mutex_ );
   worker.busySince = since;
   since ? ++busy_ : --busy_;
   if ( busy_ == 0 )
      idle_.notify_all();
}

void Dispatcher::run( Worker &worker, const Bus::Transaction &transaction,
                      const Smbus::TransactionRequest &message, const Answer &answer ) {
   const Bus::Clock::Time begun = clock_.now();
   busyIs( worker, begun );
   Smbus::TransactionResponse response = worker.executor->run( transaction );
   if ( observer_ )
      observer_( message, response, begun, clock_.now() - begun );
   busyIs( worker, {} );
   if ( response.failed() )
      spdlog::debug( "failed: {}", response.error() );
   answer( std::move( response ) );
}

void Dispatcher::dispatch( const Smbus::TransactionRequest &message,
                           std::shared_ptr<const Client> client, Answer answer ) {
   try {
      Bus::Transaction transaction = Bus::decode( message, bound_ );
      if ( transaction.transfers.empty() )
         return answer( {} );
      Worker &worker = workerOf( transaction );
      const auto kept = observer_ ? message : Smbus::TransactionRequest();
      boost::asio::post( *worker.thread,
                         [this, &worker, kept, transaction = std::move( transaction ),
                          client = std::move( client ), answer = std::move( answer )] {
                            if ( !client->gone && !stopped() )
                               run( worker, transaction, kept, answer );
                         } );
   } catch ( const Bus::Refused &reason ) {
      spdlog::warn( "refused: {}", reason.what() );
      const Smbus::TransactionResponse refusal = Bus::failure( reason.what() );
      if ( observer_ )
         observer_( message, refusal, clock_.now(), Bus::Clock::Time( 0 ) );
      answer( refusal );
   }
}

bool Dispatcher::stopped() {
   const std::lock_guard lock( mutex_ );
   return stopped_;
}

} // namespace Smbusd
