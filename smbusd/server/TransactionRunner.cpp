#include "smbusd/server/TransactionRunner.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <array>
#include <bitset>

namespace Smbusd {

namespace {

using Mux = BusAccount::Mux;

std::string explain( const Bus::Transaction &transaction, size_t index, const std::string &error ) {
   return fmt::format( "request {} of {}: {} on {}: {}", index + 1, transaction.transfers.size(),
                       describe( transaction.transfers[index] ), toString( transaction.bus ),
                       error );
}

std::string timeIsUp( const Bus::Transaction &transaction ) {
   return fmt::format( "the time limit of {} ms is over", transaction.limit.count() );
}

void addError( Smbus::TransactionResponse &response, const std::string &error ) {
   response.set_failed( true );
   std::string &text = *response.mutable_error();
   text += text.empty() ? error : "; " + error;
}

// By address: the last send byte to it.
std::array<size_t, 128> lastSends( const Bus::Transaction &transaction ) {
   std::array<size_t, 128> last{};
   for ( size_t i = 0; i < transaction.transfers.size(); ++i )
      if ( transaction.transfers[i].isSendByte() )
         last[transaction.transfers[i].address] = i;
   return last;
}

} // namespace

void TransactionRunner::run( const Bus::Transaction &transaction,
                             Smbus::TransactionResponse &response ) {
   now_ = clock_.now();
   retryPendingDeselects();
   const Bus::Clock::Time end = now_ + transaction.limit;
   std::bitset<128> sentTo; // by address
   const std::array<size_t, 128> lastSend = lastSends( transaction );
   for ( size_t i = 0; i < transaction.transfers.size(); ++i ) {
      const Bus::Transfer &transfer = transaction.transfers[i];
      const bool deselects = transfer.isSendByte() && sentTo[transfer.address];
      if ( response.failed() && !deselects )
         continue;
      if ( !deselects && now_ >= end ) {
         addError( response, explain( transaction, i, "not started: " + timeIsUp( transaction ) ) );
         continue;
      }
      // A send byte that no second one follows is a command of some chip.
      const bool selects = transfer.isSendByte() && !deselects && i < lastSend[transfer.address];
      const auto mux = deselects ? Mux::Deselect : selects ? Mux::Select : Mux::None;
      Bus::Outcome outcome = attempt( transfer, transaction, mux, end );
      if ( transfer.isSendByte() ) {
         sentTo.set( transfer.address );
         if ( outcome.ok() )
            pendingDeselects_.erase( transfer.address );
         else if ( deselects )
            pendingDeselects_.insert_or_assign( transfer.address, transfer );
      }
      if ( !outcome.ok() )
         addError( response, explain( transaction, i, outcome.error ) );
      else if ( !response.failed() )
         response.add_response()->set_data( std::move( outcome.data ) );
   }
}

Bus::Outcome TransactionRunner::attempt( const Bus::Transfer &transfer,
                                         const Bus::Transaction &transaction, Mux mux,
                                         Bus::Clock::Time end ) {
   for ( uint64_t tries = 1;; ++tries ) {
      Bus::Outcome outcome = transferOnce( transfer, mux );
      if ( outcome.ok() )
         return outcome;
      const bool late = now_ >= end;
      const bool again = tries <= transaction.retries && !outcome.final;
      if ( again && !late )
         continue;
      if ( tries > 1 )
         outcome.error += fmt::format( ", {} tries", tries );
      if ( again )
         outcome.error += ", " + timeIsUp( transaction );
      return outcome;
   }
}

Bus::Outcome TransactionRunner::transferOnce( const Bus::Transfer &transfer, Mux mux ) {
   const Bus::Clock::Time begun = now_;
   Bus::Outcome outcome = bus_.transfer( transfer );
   now_ = clock_.now();
   if ( account_ )
      account_->add( transfer, outcome, mux, begun, now_ - begun );
   return outcome;
}

void TransactionRunner::retryPendingDeselects() {
   for ( auto pending = pendingDeselects_.begin(); pending != pendingDeselects_.end(); ) {
      const Bus::Outcome outcome = transferOnce( pending->second, Mux::Deselect );
      if ( !outcome.ok() )
         spdlog::warn( "pending deselect after a failed transaction: {}: {}",
                       describe( pending->second ), outcome.error );
      pending = outcome.ok() ? pendingDeselects_.erase( pending ) : std::next( pending );
   }
}

} // namespace Smbusd
