#include "host/serve/LiveBusses.h"

#include "host/JsonWriter.h"
#include "smbus/BusLoads.h"

#include <cmath>

namespace Host {
namespace {

using SmbusControl::BusLoad;
using SmbusControl::Response;
using SmbusControl::Segment;
using SmbusControl::Totals;

class BusWriter {
 public:
   BusWriter( const BusLoad &before, const BusLoad &now, double seconds )
      : before_( before ), now_( now ), seconds_( seconds ) {}

   std::string write() {
      json_.beginObject().member( "bus", now_.bus() );
      if ( now_.wires() )
         json_.member( "clock", int64_t{ now_.clock() } );
      addLoad( before_.totals(), now_.totals() );
      addFailures( now_.totals() );
      if ( now_.has_held() )
         json_.member( "held", now_.held() );
      if ( now_.quarantined_size() > 0 ) {
         json_.key( "quarantined" ).beginList();
         for ( const SmbusControl::Quarantined &segment : now_.quarantined() )
            json_.value( segment.path() );
         json_.endList();
      }
      json_.key( "segments" ).beginList();
      for ( const Segment &segment : now_.segment() )
         add( segment );
      json_.endList().key( "clients" ).beginList();
      for ( const SmbusControl::Client &client : now_.client() ) {
         json_.beginObject().member( "program", client.program() );
         json_.member( "process", int64_t{ client.process() } );
         addLoad( Bus::earlier( before_, client ).totals(), client.totals() );
         json_.endObject();
      }
      return json_.endList().endObject().text();
   }

 private:
   void add( const Segment &segment ) {
      json_.beginObject().member( "path", segment.path() );
      addLoad( Bus::earlier( before_, segment ).totals(), segment.totals() );
      addFailures( segment.totals() );
      json_.key( "failing" ).beginList();
      for ( const SmbusControl::ChipLoad &chip : segment.chip() )
         if ( chip.failures_in_a_row() > 0 ) {
            json_.beginObject().member( "address", int64_t{ chip.address() } );
            json_.member( "inARow", static_cast<int64_t>( chip.failures_in_a_row() ) );
            json_.member( "last", Bus::nameOf( chip.last_failure() ) ).endObject();
         }
      json_.endList().endObject();
   }
   // I/O ports have no wires, but take their time, too.
   void addLoad( const Totals &before, const Totals &now ) {
      const Bus::Load load = Bus::loadBetween( before, now, seconds_ );
      const double share = now_.wires() ? load.wires : load.busy;
      json_.member( "load", std::round( share * 1000 ) / 1000 );
   }
   void addFailures( const Totals &totals ) {
      json_.member( "failures", static_cast<int64_t>( totals.failures() ) );
   }

   const BusLoad &before_;
   const BusLoad &now_;
   const double seconds_;
   JsonWriter json_{};
};

} // namespace

void LiveBusses::told( const Response &now ) {
   if ( !before_.empty() && now.seconds() < before_.back().seconds() )
      before_.clear(); // the server has started anew
   const Response &before = before_.empty() ? Response::default_instance() : before_.front();
   json_.clear();
   for ( const BusLoad &bus : now.bus() )
      json_.push_back(
         BusWriter( Bus::earlier( before, bus ), bus, now.seconds() - before.seconds() ).write() );
   before_.push_back( now );
   if ( before_.size() > 2 )
      before_.pop_front();
}

} // namespace Host
