#include "smbus/BusLoads.h"

#include <fmt/format.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <cmath>
#include <map>

namespace Bus {

using namespace SmbusControl;

namespace {

// An entry whose figures are smaller than before is a new one.
uint64_t since( uint64_t before, uint64_t now ) { return now < before ? now : now - before; }

// The entry that had this key before; an empty one when there was none.
template <typename Entries, typename Is>
const auto &find( const Entries &entries, Is is ) {
   using Entry = std::decay_t<decltype( *entries.begin() )>;
   const auto found = std::find_if( entries.begin(), entries.end(), is );
   return found == entries.end() ? Entry::default_instance() : *found;
}

} // namespace

Load &Load::operator+=( const Load &other ) {
   wires += other.wires;
   busy += other.busy;
   transfers += other.transfers;
   failures += other.failures;
   return *this;
}

Load loadBetween( const Totals &before, const Totals &now, double seconds ) {
   const auto share = [seconds]( uint64_t from, uint64_t to ) {
      return seconds > 0 ? static_cast<double>( since( from, to ) ) / 1e9 / seconds : 0.0;
   };
   return { share( before.wire_ns(), now.wire_ns() ), share( before.busy_ns(), now.busy_ns() ),
            since( before.transfers(), now.transfers() ),
            since( before.failures(), now.failures() ) };
}

WaitingTimes waitingTimesBetween( const BusLoad &before, const BusLoad &now ) {
   std::map<uint64_t, uint64_t> counts;
   uint64_t all = 0;
   for ( const Latency &latency : now.latency() )
      all += counts[latency.up_to_ns()] = latency.count();
   for ( const Latency &latency : before.latency() ) {
      counts[latency.up_to_ns()] -= latency.count();
      all -= latency.count();
   }
   WaitingTimes times;
   uint64_t seen = 0;
   for ( const auto &[upTo, count] : counts ) {
      const double seconds = static_cast<double>( upTo ) / 1e9;
      if ( count == 0 )
         continue;
      if ( seen < ( all + 1 ) / 2 )
         times.median = seconds;
      if ( seen < all - all / 100 )
         times.ninetyNinth = seconds;
      times.worst = seconds;
      seen += count;
   }
   return times;
}

const BusLoad &earlier( const Response &response, const BusLoad &bus ) {
   return find( response.bus(), [&]( const BusLoad &each ) { return each.bus() == bus.bus(); } );
}
const Segment &earlier( const BusLoad &bus, const Segment &segment ) {
   return find( bus.segment(),
                [&]( const Segment &each ) { return each.path() == segment.path(); } );
}
const ChipLoad &earlier( const Segment &segment, const ChipLoad &chip ) {
   return find( segment.chip(),
                [&]( const ChipLoad &each ) { return each.address() == chip.address(); } );
}
const Client &earlier( const BusLoad &bus, const Client &client ) {
   return find( bus.client(), [&]( const Client &each ) {
      return each.process() == client.process() && each.user() == client.user();
   } );
}

std::string describe( const Quarantined &segment ) {
   const std::string held =
      segment.path().empty() ? "" : fmt::format( "the segment {}", segment.path() );
   const std::string what = held.empty() ? "the bus"
                            : segment.whole_bus()
                               ? fmt::format( "the bus, which can't be released from {},", held )
                               : held;
   return fmt::format( "{} {} for {:.0f} s ({}), next try {}", what, isQuarantined,
                       segment.seconds(), segment.reason(),
                       segment.next() > 0
                          ? fmt::format( "in {:.0f} s", std::ceil( segment.next() ) )
                          : "with the next request" );
}

std::string describe( const LeaseState &lease ) {
   if ( lease.seconds() > 0 )
      return fmt::format( "process {} has the lease of the board for {:.0f} s", lease.process(),
                          std::ceil( lease.seconds() ) );
   return fmt::format( "the lease of the board was over {:.0f} s ago: {} of {} writes of its safe "
                       "state are done{}{}",
                       -lease.seconds(), lease.done(), lease.writes(),
                       lease.error().empty() ? "" : "; the last one that failed: ", lease.error() );
}

const char *nameOf( ChipLoad::Failure failure ) {
   switch ( failure ) {
   case ChipLoad::NO_ACKNOWLEDGE:
      return "nack";
   case ChipLoad::PEC:
      return "pec";
   case ChipLoad::TIMEOUT:
      return "timeout";
   case ChipLoad::HELD_LOW:
      return "held-low";
   default: // also what a newer server tells
      return "other";
   }
}

std::vector<std::pair<const char *, uint64_t>> errorsBetween( const Errors &before,
                                                              const Errors &now ) {
   return { { nameOf( ChipLoad::NO_ACKNOWLEDGE ), now.no_acknowledge() - before.no_acknowledge() },
            { nameOf( ChipLoad::PEC ), now.pec() - before.pec() },
            { nameOf( ChipLoad::TIMEOUT ), now.timeout() - before.timeout() },
            { nameOf( ChipLoad::HELD_LOW ), now.held_low() - before.held_low() },
            { nameOf( ChipLoad::OTHER ), now.other() - before.other() } };
}

namespace {

class LoadWriter {
 public:
   LoadWriter( const Response &before, const Response &now )
      : before_( before ), now_( now ), seconds_( now.seconds() - before.seconds() ) {}

   std::string write() {
      rapidjson::StringBuffer buffer;
      Json to( buffer );
      to.StartObject();
      add( to, "seconds", now_.seconds() );
      add( to, "interval", seconds_ );
      addAll( to, "busses", now_.bus(), [&]( const BusLoad &bus ) { addBus( to, bus ); } );
      to.EndObject();
      return { buffer.GetString(), buffer.GetSize() };
   }

 private:
   using Json = rapidjson::Writer<rapidjson::StringBuffer>;

   static void add( Json &to, const char *key, const std::string &text ) {
      to.Key( key );
      to.String( text.data(), static_cast<rapidjson::SizeType>( text.size() ) );
   }
   static void add( Json &to, const char *key, double number ) {
      to.Key( key );
      to.Double( number );
   }
   static void add( Json &to, const char *key, uint64_t number ) {
      to.Key( key );
      to.Uint64( number );
   }
   template <typename Entries, typename AddOne>
   static void addAll( Json &to, const char *key, const Entries &entries, AddOne addOne ) {
      to.Key( key );
      to.StartArray();
      for ( const auto &entry : entries ) {
         to.StartObject();
         addOne( entry );
         to.EndObject();
      }
      to.EndArray();
   }
   void addTotals( Json &to, const Totals &before, const Totals &now ) const {
      const Load load = loadBetween( before, now, seconds_ );
      add( to, "transfers", load.transfers );
      add( to, "failures", load.failures );
      add( to, "bytes", since( before.bytes(), now.bytes() ) );
      add( to, "wireSeconds",
           static_cast<double>( since( before.wire_ns(), now.wire_ns() ) ) / 1e9 );
      add( to, "busySeconds",
           static_cast<double>( since( before.busy_ns(), now.busy_ns() ) ) / 1e9 );
   }
   void addBus( Json &to, const BusLoad &bus ) const {
      const BusLoad &before = earlier( before_, bus );
      add( to, "bus", bus.bus() );
      if ( bus.wires() )
         add( to, "clock", uint64_t{ bus.clock() } );
      addTotals( to, before.totals(), bus.totals() );
      add( to, "transactions", bus.transactions() - before.transactions() );
      add( to, "failedTransactions", bus.failed_transactions() - before.failed_transactions() );
      to.Key( "errors" );
      to.StartObject();
      for ( const auto &[kind, count] : errorsBetween( before.errors(), bus.errors() ) )
         add( to, kind, count );
      to.EndObject();
      if ( bus.has_held() )
         add( to, "held", bus.held() );
      if ( bus.quarantined_size() > 0 )
         addAll( to, "quarantined", bus.quarantined(), [&]( const Quarantined &segment ) {
            add( to, "path", segment.path() );
            to.Key( "wholeBus" );
            to.Bool( segment.whole_bus() );
            add( to, "reason", segment.reason() );
            add( to, "seconds", segment.seconds() );
            add( to, "next", segment.next() );
         } );
      const WaitingTimes times = waitingTimesBetween( before, bus );
      to.Key( "latency" );
      to.StartObject();
      add( to, "median", times.median );
      add( to, "percentile99", times.ninetyNinth );
      add( to, "worst", times.worst );
      to.EndObject();
      addAll( to, "segments", bus.segment(), [&]( const Segment &segment ) {
         const Segment &was = earlier( before, segment );
         add( to, "path", segment.path() );
         addTotals( to, was.totals(), segment.totals() );
         addAll( to, "chips", segment.chip(), [&]( const ChipLoad &chip ) {
            add( to, "address", uint64_t{ chip.address() } );
            addTotals( to, earlier( was, chip ).totals(), chip.totals() );
            if ( chip.failures_in_a_row() == 0 )
               return;
            add( to, "failuresInARow", chip.failures_in_a_row() );
            add( to, "lastFailure", std::string( nameOf( chip.last_failure() ) ) );
         } );
      } );
      addAll( to, "clients", bus.client(), [&]( const Client &client ) {
         const Client &was = earlier( before, client );
         add( to, "user", uint64_t{ client.user() } );
         add( to, "process", uint64_t{ client.process() } );
         add( to, "program", client.program() );
         addTotals( to, was.totals(), client.totals() );
         add( to, "transactions", since( was.transactions(), client.transactions() ) );
      } );
   }

   const Response &before_;
   const Response &now_;
   const double seconds_;
};

} // namespace

std::string loadsAsJson( const Response &before, const Response &now ) {
   return LoadWriter( before, now ).write();
}

} // namespace Bus
