#include "smbusd/server/TransactionRunner.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <array>
#include <bitset>

namespace Smbusd {

namespace {

using Mux = BusAccount::Mux;

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

bool holdsALine( const Bus::Outcome &outcome ) {
   return !outcome.ok() && errorKindOf( outcome.error ) == ErrorKind::HeldLow;
}

bool ranOutOfTime( const Bus::Outcome &outcome ) {
   return !outcome.ok() && errorKindOf( outcome.error ) == ErrorKind::Timeout;
}

} // namespace

void TransactionRunner::run( const Bus::Transaction &transaction,
                             Smbus::TransactionResponse &response ) {
   begun_ = now_ = clock_.now();
   path_.clear();
   asked_.reset();
   late_.reset();
   stuck_.reset();
   held_.reset();
   if ( const auto why = whyNothingPasses() ) {
      addError( response, describe( transaction, 0, *why ) );
      return;
   }
   carryOut( transaction, response );
   judge();
}

// The bus may have been left alone until now; then it is tried.
std::optional<std::string> TransactionRunner::whyNothingPasses() {
   if ( auto refusal = quarantine_.refusalOfAll( now_ ) )
      return refusal;
   static const Bus::SegmentPath root;
   if ( quarantine_.isHere( root ) )
      bus_.clearLines();
   if ( pendingDeselects_.empty() )
      return {};
   retryPendingDeselects();
   if ( held_ )
      quarantine_.isJoined( *held_, failure( whyHeld_ ) );
   else if ( quarantine_.waitsForRelease() )
      quarantine_.isReleased();
   held_.reset();
   return quarantine_.refusalOfAll( now_ );
}

void TransactionRunner::carryOut( const Bus::Transaction &transaction,
                                  Smbus::TransactionResponse &response ) {
   const Bus::Clock::Time end = now_ + transaction.limit;
   std::bitset<128> sentTo; // by address
   const std::array<size_t, 128> lastSend = lastSends( transaction );
   for ( size_t i = 0; i < transaction.transfers.size(); ++i ) {
      const Bus::Transfer &transfer = transaction.transfers[i];
      const bool deselects = transfer.isSendByte() && sentTo[transfer.address];
      if ( response.failed() && !deselects )
         continue;
      if ( !deselects && now_ >= end ) {
         isLate( timeIsUp( transaction ) );
         addError( response,
                   describe( transaction, i, "not started: " + timeIsUp( transaction ) ) );
         continue;
      }
      // A send byte that no second one follows is a command of some chip.
      const bool selects = transfer.isSendByte() && !deselects && i < lastSend[transfer.address];
      if ( selects ) {
         path_.push_back( { transfer.address, static_cast<uint8_t>( transfer.offset ) } );
         const auto refusal = quarantine_.refusal( path_, now_ );
         path_.pop_back();
         if ( refusal ) {
            addError( response, describe( transaction, i, *refusal ) );
            continue;
         }
      }
      const auto mux = deselects ? Mux::Deselect : selects ? Mux::Select : Mux::None;
      Bus::Outcome outcome = attempt( transfer, transaction, mux, end );
      if ( transfer.isSendByte() ) {
         sentTo.set( transfer.address );
         if ( outcome.ok() )
            pendingDeselects_.erase( transfer.address );
         else if ( deselects )
            pendingDeselects_.insert_or_assign( transfer.address, Deselect{ transfer, path_ } );
      }
      if ( deselects )
         wasDeselected( transfer, outcome );
      else if ( selects )
         wasSelected( transfer, outcome );
      else
         wasAnswered( outcome );
      if ( !outcome.ok() )
         addError( response, describe( transaction, i, outcome.error ) );
      else if ( !response.failed() )
         response.add_response()->set_data( std::move( outcome.data ) );
   }
}

void TransactionRunner::wasSelected( const Bus::Transfer &transfer, const Bus::Outcome &outcome ) {
   if ( !outcome.ok() )
      return wasAnswered( outcome );
   if ( quarantine_.isWatching() )
      quarantine_.answers( path_ );
   path_.push_back( { transfer.address, static_cast<uint8_t>( transfer.offset ) } );
}

// Of nested segments the innermost is the one that holds the line.
void TransactionRunner::wasDeselected( const Bus::Transfer &transfer,
                                       const Bus::Outcome &outcome ) {
   if ( !outcome.ok() ) {
      if ( !held_ && ( holdsALine( outcome ) || ranOutOfTime( outcome ) ) ) {
         held_ = path_;
         whyHeld_ = outcome.error;
      }
      return;
   }
   held_.reset();
   const auto left = std::find_if( path_.begin(), path_.end(), [&]( const Bus::Selection &one ) {
      return one.mux == transfer.address;
   } );
   path_.erase( left, path_.end() );
}

void TransactionRunner::wasAnswered( const Bus::Outcome &outcome ) {
   if ( holdsALine( outcome ) ) {
      stuck_ = path_;
      whyStuck_ = outcome.error;
   } else if ( ranOutOfTime( outcome ) ) {
      isLate( outcome.error );
   } else if ( quarantine_.isWatching() ) {
      if ( asked_ && asked_ != path_ )
         quarantine_.answers( *asked_ );
      asked_ = path_;
   }
}

void TransactionRunner::isLate( const std::string &reason ) {
   late_ = path_;
   whyLate_ = reason;
}

// What the transaction tells of the segments where it was.
void TransactionRunner::judge() {
   if ( stuck_ )
      quarantine_.isHeld( *stuck_, failure( whyStuck_ ) );
   if ( late_ )
      quarantine_.isLate( *late_, failure( whyLate_ ) );
   if ( asked_ && asked_ != late_ )
      quarantine_.answers( *asked_ );
   if ( held_ )
      quarantine_.isJoined( *held_, failure( whyHeld_ ) );
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
   const auto once = [&] {
      const Bus::Clock::Time begun = now_;
      Bus::Outcome outcome = bus_.transfer( transfer );
      now_ = clock_.now();
      if ( account_ )
         account_->add( transfer, outcome, mux, begun, now_ - begun );
      return outcome;
   };
   Bus::Outcome outcome = once();
   if ( mux != Mux::Deselect || !( holdsALine( outcome ) || ranOutOfTime( outcome ) ) )
      return outcome;
   // The chip that holds the line lets no release pass. Perhaps it can be made to let go.
   if ( bus_.clearLines() )
      outcome = once();
   if ( !outcome.ok() && bus_.resetMux( transfer.address ) )
      outcome = once();
   return outcome;
}

void TransactionRunner::retryPendingDeselects() {
   for ( auto pending = pendingDeselects_.begin(); pending != pendingDeselects_.end(); ) {
      const Deselect &deselect = pending->second;
      const Bus::Outcome outcome = transferOnce( deselect.transfer, Mux::Deselect );
      if ( !outcome.ok() )
         spdlog::warn( "pending deselect after a failed transaction: {}: {}",
                       describe( deselect.transfer ), outcome.error );
      path_ = deselect.joined;
      wasDeselected( deselect.transfer, outcome );
      pending = outcome.ok() ? pendingDeselects_.erase( pending ) : std::next( pending );
   }
   path_.clear();
}

} // namespace Smbusd
