#include "smbusd/accounts/Report.h"

#include <fmt/format.h>

#include <algorithm>

namespace Smbusd {

namespace {

// The texts of segments are made once, not for each transfer.
class SegmentNames {
 public:
   explicit SegmentNames( const std::vector<BusAccount::Segment> &segments ) {
      for ( size_t i = 0; i < segments.size(); ++i )
         names_.push_back( BusAccount::pathTo( segments, i ) );
   }
   // A segment that was found since then has no name yet.
   std::string of( size_t segment ) const {
      return segment < names_.size() ? names_[segment] : std::string();
   }

 private:
   std::vector<std::string> names_;
};

void describe( const Totals &totals, uint32_t clock, SmbusControl::Totals &to ) {
   to.set_transfers( totals.transfers );
   to.set_failures( totals.failures );
   to.set_bytes( totals.wires.bytes );
   to.set_wire_ns( static_cast<uint64_t>( Bus::wireTime( totals.wires, clock ).count() ) );
   to.set_busy_ns( static_cast<uint64_t>( totals.busy.count() ) );
}

SmbusControl::ChipLoad::Failure failureOf( ErrorKind kind ) {
   switch ( kind ) {
   case ErrorKind::NoAcknowledge:
      return SmbusControl::ChipLoad::NO_ACKNOWLEDGE;
   case ErrorKind::Pec:
      return SmbusControl::ChipLoad::PEC;
   case ErrorKind::Timeout:
      return SmbusControl::ChipLoad::TIMEOUT;
   case ErrorKind::HeldLow:
      return SmbusControl::ChipLoad::HELD_LOW;
   default:
      return SmbusControl::ChipLoad::OTHER;
   }
}

void describe( const BusAccount::Figures &figures, uint32_t clock, SmbusControl::BusLoad &to ) {
   describe( figures.totals, clock, *to.mutable_totals() );
   to.set_transactions( figures.transactions );
   to.set_failed_transactions( figures.failedTransactions );
   const auto errors = [&]( ErrorKind kind ) {
      return figures.errors[static_cast<size_t>( kind )];
   };
   to.mutable_errors()->set_no_acknowledge( errors( ErrorKind::NoAcknowledge ) );
   to.mutable_errors()->set_pec( errors( ErrorKind::Pec ) );
   to.mutable_errors()->set_timeout( errors( ErrorKind::Timeout ) );
   to.mutable_errors()->set_held_low( errors( ErrorKind::HeldLow ) );
   to.mutable_errors()->set_other( errors( ErrorKind::Other ) );
   figures.latencies.each( [&to]( uint64_t longest, uint64_t count ) {
      SmbusControl::Latency &latency = *to.add_latency();
      latency.set_up_to_ns( longest );
      latency.set_count( count );
   } );
   to.set_latency_ns( static_cast<uint64_t>( figures.latency.count() ) );
   const SegmentNames names( figures.segments );
   for ( size_t i = 0; i < figures.segments.size(); ++i ) {
      SmbusControl::Segment &segment = *to.add_segment();
      segment.set_path( names.of( i ) );
      describe( figures.segments[i].totals, clock, *segment.mutable_totals() );
      for ( const auto &[address, account] : figures.segments[i].chips ) {
         SmbusControl::ChipLoad &chip = *segment.add_chip();
         chip.set_address( address );
         describe( account.totals, clock, *chip.mutable_totals() );
         chip.set_failures_in_a_row( account.failuresInARow );
         chip.set_last_failure( failureOf( account.lastFailure ) );
      }
   }
   if ( figures.heldSegment )
      to.set_held( names.of( *figures.heldSegment ) );
   for ( const BusAccount::Client &from : figures.clients ) {
      SmbusControl::Client &client = *to.add_client();
      client.set_user( from.user );
      client.set_process( static_cast<uint32_t>( from.process ) );
      client.set_program( from.program );
      describe( from.totals, clock, *client.mutable_totals() );
      client.set_transactions( from.transactions );
      client.set_failed_transactions( from.failedTransactions );
   }
}

void describe( const PassedTransfer &passed, uint32_t clock, SmbusControl::Transfer &to ) {
   to.set_seconds( Bus::secondsIn( passed.begun ) );
   to.set_address( passed.transfer.address );
   to.set_operation( Bus::describe( passed.transfer ) );
   to.set_written( passed.transfer.data );
   to.set_read( passed.outcome.data );
   to.set_error( passed.outcome.error );
   to.set_process( static_cast<uint32_t>( passed.client.process ) );
   SmbusControl::Wires &wires = *to.mutable_wires();
   wires.set_kind( static_cast<SmbusControl::Wires::Kind>( passed.transfer.kind ) );
   wires.set_offset( passed.transfer.offset );
   wires.set_offset_bytes( passed.transfer.offsetBytes );
   wires.set_length( passed.transfer.length );
   wires.set_pec( passed.transfer.pec );
   if ( passed.outcome.bytes )
      wires.set_bytes( *passed.outcome.bytes );
   wires.set_took_ns( static_cast<uint64_t>( passed.took.count() ) );
   wires.set_cut( passed.cut );
   wires.set_clock( clock );
}

void addLast( const BusAccount &account, bool failures, SmbusControl::Response &response ) {
   const SegmentNames names( account.segments() );
   const std::string bus = toString( account.bus() );
   for ( const PassedTransfer &passed : account.last( failures ) ) {
      SmbusControl::Transfer &to = *response.add_passed();
      describe( passed, account.clock(), to );
      to.set_bus( bus );
      to.set_segment( names.of( passed.segment ) );
   }
}

void addQuarantine( const KnownBus &bus, Bus::Clock::Time now,
                    google::protobuf::RepeatedPtrField<SmbusControl::Quarantined> &list ) {
   if ( !bus.quarantine )
      return;
   for ( const Quarantine::Segment &segment : bus.quarantine->all() ) {
      SmbusControl::Quarantined &to = *list.Add();
      to = segment.told( now );
      to.set_bus( toString( bus.account->bus() ) );
   }
}

std::string namesOf( const std::vector<KnownBus> &busses ) {
   std::string names;
   for ( const KnownBus &bus : busses )
      names += ( names.empty() ? "" : ", " ) + toString( bus.account->bus() );
   return names.empty() ? "no bus" : names;
}

} // namespace

SmbusControl::Response report( const SmbusControl::Request &request,
                               const std::vector<KnownBus> &busses, Bus::Clock::Time now ) {
   SmbusControl::Response response;
   response.set_seconds( Bus::secondsIn( now ) );
   const std::string &wanted = request.last().bus();
   bool found = wanted.empty();
   for ( const KnownBus &bus : busses ) {
      const BusAccount &account = *bus.account;
      const std::string name = toString( account.bus() );
      if ( request.has_last() ) {
         if ( !wanted.empty() && wanted != name )
            continue;
         found = true;
         addLast( account, request.last().failures(), response );
         addQuarantine( bus, now, *response.mutable_quarantined() );
         continue;
      }
      SmbusControl::BusLoad &load = *response.add_bus();
      load.set_bus( name );
      load.set_clock( account.clock() );
      load.set_wires( account.hasWires() );
      describe( account.figures(), account.clock(), load );
      addQuarantine( bus, now, *load.mutable_quarantined() );
   }
   if ( !found )
      response.set_error(
         fmt::format( "{} is not served; these are: {}", wanted, namesOf( busses ) ) );
   return response;
}

} // namespace Smbusd
