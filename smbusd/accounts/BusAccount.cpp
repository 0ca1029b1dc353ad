#include "smbusd/accounts/BusAccount.h"

#include "smbus/RootBus.h"
#include "smbus/SegmentPath.h"

#include <algorithm>

namespace Smbusd {

ErrorKind errorKindOf( std::string_view error ) {
   const auto has = [error]( std::string_view part ) { return error.find( part ) != error.npos; };
   if ( error == Bus::noAddressAcknowledge )
      return ErrorKind::NoAcknowledge;
   if ( has( "PEC" ) )
      return ErrorKind::Pec;
   // To an adapter a line that stays low is a bus that stays busy.
   if ( has( "held low" ) || has( "stays busy" ) )
      return ErrorKind::HeldLow;
   return has( "timed out" ) || has( "timeout is over" ) ? ErrorKind::Timeout : ErrorKind::Other;
}

void Totals::add( const Bus::WireCount &count, Bus::Clock::Time took, bool failed ) {
   ++transfers;
   failures += failed;
   wires += count;
   busy += took;
}

Totals &Totals::operator+=( const Totals &other ) {
   transfers += other.transfers;
   failures += other.failures;
   wires += other.wires;
   busy += other.busy;
   return *this;
}

BusAccount::BusAccount( const Bus::RootBusId &bus, uint32_t clock )
   : bus_( bus ), clock_( clock ), segments_( 1 ) {}

void BusAccount::begin( const Peer &peer ) {
   const std::lock_guard lock( mutex_ );
   peer_ = peer;
   segment_ = 0;
   hasPassed_ = false;
   client_ = &clientOf( peer );
   ++client_->transactions;
}

size_t BusAccount::segmentBehind( uint8_t mux, uint8_t select ) {
   const auto found =
      std::find_if( segments_.begin() + 1, segments_.end(), [&]( const Segment &segment ) {
         return segment.before == segment_ && segment.mux == mux && segment.select == select;
      } );
   if ( found != segments_.end() )
      return static_cast<size_t>( found - segments_.begin() );
   if ( segments_.size() == maxSegments )
      return segment_;
   segments_.push_back( { .before = segment_, .mux = mux, .select = select } );
   return segments_.size() - 1;
}

void BusAccount::add( const Bus::Transfer &transfer, const Bus::Outcome &outcome, Mux mux,
                      Time begun, Time took ) {
   const Bus::WireCount count =
      hasWires() ? Bus::onTheWires( transfer, outcome ) : Bus::WireCount();
   const std::lock_guard lock( mutex_ );
   hasPassed_ = true;
   totals_.add( count, took, !outcome.ok() );
   segments_[segment_].totals.add( count, took, !outcome.ok() );
   Chip &chip = segments_[segment_].chips[transfer.address];
   chip.totals.add( count, took, !outcome.ok() );
   client_->totals.add( count, took, !outcome.ok() );
   passed_.add( begun, took, transfer, outcome, segment_, peer_ );
   if ( !outcome.ok() ) {
      addFailure( chip, errorKindOf( outcome.error ) );
      return;
   }
   chip.failuresInARow = 0;
   heldSegment_.reset();
   if ( mux == Mux::Select )
      segment_ = segmentBehind( transfer.address, static_cast<uint8_t>( transfer.offset ) );
   else if ( mux == Mux::Deselect )
      for ( size_t behind = segment_; behind != 0; behind = segments_[behind].before )
         if ( segments_[behind].mux == transfer.address )
            segment_ = segments_[behind].before;
}

void BusAccount::addFailure( Chip &chip, ErrorKind kind ) {
   ++errors_[static_cast<size_t>( kind )];
   ++chip.failuresInARow;
   chip.lastFailure = kind;
   if ( !heldSegment_ && ( kind == ErrorKind::HeldLow || kind == ErrorKind::Timeout ) )
      heldSegment_ = segment_;
}

void BusAccount::end( bool failed, Time latency ) {
   const std::lock_guard lock( mutex_ );
   ++transactions_;
   failedTransactions_ += failed;
   client_->failedTransactions += failed;
   latencies_.add( latency );
   latency_ += latency;
   if ( failed && hasPassed_ )
      passed_.keepFailure();
}

BusAccount::Client &BusAccount::clientOf( const Peer &peer ) {
   const auto isIt = [&]( const Client &client ) {
      return client.process == peer.process && client.user == peer.user;
   };
   const auto found = std::find_if( clients_.begin(), clients_.end(), isIt );
   if ( found != clients_.end() ) {
      clients_.splice( clients_.begin(), clients_, found );
      return clients_.front();
   }
   if ( clients_.size() == maxClients ) {
      const Client &oldest = clients_.back();
      others_.totals += oldest.totals;
      others_.transactions += oldest.transactions;
      others_.failedTransactions += oldest.failedTransactions;
      clients_.pop_back();
   }
   return clients_.emplace_front(
      Client{ .user = peer.user, .process = peer.process, .program = programOf( peer.process ) } );
}

BusAccount::Figures BusAccount::figures() const {
   const std::lock_guard lock( mutex_ );
   Figures figures{ .totals = totals_,
                    .errors = errors_,
                    .transactions = transactions_,
                    .failedTransactions = failedTransactions_,
                    .latencies = latencies_,
                    .latency = latency_,
                    .segments = segments_,
                    .clients = { clients_.begin(), clients_.end() },
                    .heldSegment = heldSegment_ };
   if ( others_.transactions > 0 )
      figures.clients.push_back( others_ );
   return figures;
}

std::vector<PassedTransfer> BusAccount::last( bool ofFailures ) const {
   const std::lock_guard lock( mutex_ );
   return ofFailures ? passed_.ofFailures() : passed_.last();
}

std::vector<BusAccount::Segment> BusAccount::segments() const {
   const std::lock_guard lock( mutex_ );
   return segments_;
}

std::string BusAccount::pathTo( const std::vector<Segment> &segments, size_t segment ) {
   Bus::SegmentPath path;
   for ( ; segment != 0; segment = segments[segment].before )
      path.insert( path.begin(), { segments[segment].mux, segments[segment].select } );
   return toText( path );
}

} // namespace Smbusd
