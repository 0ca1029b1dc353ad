#include "orbis-smbus/LoadOutput.h"

#include "orbis-smbus/Formatting.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

namespace SmbusClient {

namespace {

using namespace SmbusControl;

// An entry whose figures are smaller than before is a new one.
uint64_t since( uint64_t before, uint64_t now ) { return now < before ? now : now - before; }

struct Load {
   double wires = 0; // shares of the time
   double busy = 0;
   uint64_t transfers = 0;
   uint64_t failures = 0;
};

Load between( const Totals &before, const Totals &now, double seconds ) {
   const auto share = [seconds]( uint64_t from, uint64_t to ) {
      return seconds > 0 ? static_cast<double>( since( from, to ) ) / 1e9 / seconds : 0.0;
   };
   return { share( before.wire_ns(), now.wire_ns() ), share( before.busy_ns(), now.busy_ns() ),
            since( before.transfers(), now.transfers() ),
            since( before.failures(), now.failures() ) };
}

// Seconds from the request to the answer.
struct Times {
   double median = 0;
   double ninetyNinth = 0;
   double worst = 0;
};

Times timesBetween( const BusLoad &before, const BusLoad &now ) {
   std::map<uint64_t, uint64_t> counts;
   uint64_t all = 0;
   for ( const Latency &latency : now.latency() )
      all += counts[latency.up_to_ns()] = latency.count();
   for ( const Latency &latency : before.latency() ) {
      counts[latency.up_to_ns()] -= latency.count();
      all -= latency.count();
   }
   Times times;
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

// The entry that had this key before; an empty one when there was none.
template <typename Entries, typename Is>
const auto &find( const Entries &entries, Is is ) {
   using Entry = std::decay_t<decltype( *entries.begin() )>;
   const auto found = std::find_if( entries.begin(), entries.end(), is );
   return found == entries.end() ? Entry::default_instance() : *found;
}

const BusLoad &busIn( const Response &response, const BusLoad &bus ) {
   return find( response.bus(), [&]( const BusLoad &each ) { return each.bus() == bus.bus(); } );
}
const Segment &segmentIn( const BusLoad &bus, const Segment &segment ) {
   return find( bus.segment(),
                [&]( const Segment &each ) { return each.path() == segment.path(); } );
}
const ChipLoad &chipIn( const Segment &segment, const ChipLoad &chip ) {
   return find( segment.chip(),
                [&]( const ChipLoad &each ) { return each.address() == chip.address(); } );
}
const Client &clientIn( const BusLoad &bus, const Client &client ) {
   return find( bus.client(), [&]( const Client &each ) {
      return each.process() == client.process() && each.user() == client.user();
   } );
}

// For people: "3 nack, 1 pec".
std::vector<std::pair<const char *, uint64_t>> errorsBetween( const Errors &before,
                                                              const Errors &now ) {
   return { { "nack", now.no_acknowledge() - before.no_acknowledge() },
            { "pec", now.pec() - before.pec() },
            { "timeout", now.timeout() - before.timeout() },
            { "held-low", now.held_low() - before.held_low() },
            { "other", now.other() - before.other() } };
}

std::string nameOf( const Client &client ) {
   if ( client.process() == 0 )
      return "all others";
   return fmt::format( "{} ({})", client.program().empty() ? "?" : client.program(),
                       client.process() );
}

// What all clients had of all busses, by the name.
std::map<std::string, Load> clientsBetween( const Response &before, const Response &now,
                                            double seconds ) {
   std::map<std::string, Load> loads;
   for ( const BusLoad &bus : now.bus() )
      for ( const Client &client : bus.client() ) {
         const Load one =
            between( clientIn( busIn( before, bus ), client ).totals(), client.totals(), seconds );
         Load &load = loads[nameOf( client )];
         load.wires += one.wires;
         load.busy += one.busy;
         load.transfers += one.transfers;
         load.failures += one.failures;
      }
   return loads;
}

class Table {
 public:
   Table( const Response &before, const Response &now, bool chips )
      : before_( before ), now_( now ), seconds_( now.seconds() - before.seconds() ),
        chips_( chips ) {}

   std::string write() {
      text_ = fmt::format( "{:.1f} s{}\n", seconds_,
                           before_.seconds() > 0 ? "" : " since the server's start" );
      text_ += fmt::format( "{:32}{:>8}{:>8}{:>12}{:>9}{:>11}{:>11}{:>11}  {}\n", "BUS", "WIRES",
                            "BUSY", "TRANSFERS", "FAILED", "MEDIAN", "99 %", "WORST", "ERRORS" );
      for ( const BusLoad &bus : now_.bus() )
         addBus( bus );
      text_ += fmt::format( "\n{:32}{:>8}{:>8}{:>12}{:>9}\n", "CLIENT", "WIRES", "BUSY",
                            "TRANSFERS", "FAILED" );
      for ( const auto &[name, load] : clientsBetween( before_, now_, seconds_ ) )
         if ( load.transfers > 0 )
            addRow( name, load );
      return text_;
   }

 private:
   void addRow( const std::string &name, const Load &load, const std::string &more = {},
                bool wires = true ) {
      text_ += fmt::format( "{:32}{:>8}{:>8}{:>12}{:>9}{}\n", name,
                            wires ? fmt::format( "{:.1f} %", 100 * load.wires ) : "-",
                            fmt::format( "{:.1f} %", 100 * load.busy ), load.transfers,
                            load.failures, more );
   }
   void addBus( const BusLoad &bus ) {
      const BusLoad &before = busIn( before_, bus );
      const Times times = timesBetween( before, bus );
      std::string errors;
      for ( const auto &[kind, count] : errorsBetween( before.errors(), bus.errors() ) )
         if ( count > 0 )
            errors += fmt::format( "{}{} {}", errors.empty() ? "" : ", ", count, kind );
      addRow( bus.bus(), between( before.totals(), bus.totals(), seconds_ ),
              fmt::format( "{:>8.3f} ms{:>8.3f} ms{:>8.3f} ms  {}", 1e3 * times.median,
                           1e3 * times.ninetyNinth, 1e3 * times.worst, errors ),
              bus.wires() );
      for ( const Segment &segment : bus.segment() ) {
         const Segment &earlier = segmentIn( before, segment );
         // Of a bus without multiplexers there is nothing more to tell.
         if ( bus.segment_size() > 1 )
            addRow( "  " + ( segment.path().empty() ? "root" : segment.path() ),
                    between( earlier.totals(), segment.totals(), seconds_ ), {}, bus.wires() );
         for ( const ChipLoad &chip : segment.chip() )
            if ( chips_ )
               addRow( fmt::format( "    {:#04x}", chip.address() ),
                       between( chipIn( earlier, chip ).totals(), chip.totals(), seconds_ ), {},
                       bus.wires() );
      }
   }

   const Response &before_;
   const Response &now_;
   const double seconds_;
   const bool chips_;
   std::string text_;
};

class JsonWriter {
 public:
   JsonWriter( const Response &before, const Response &now )
      : before_( before ), now_( now ), seconds_( now.seconds() - before.seconds() ) {}

   std::string write() {
      return jsonObject( [this]( Json &to ) {
         add( to, "seconds", now_.seconds() );
         add( to, "interval", seconds_ );
         addAll( to, "busses", now_.bus(), [&]( const BusLoad &bus ) { addBus( to, bus ); } );
      } );
   }

 private:
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
      const Load load = between( before, now, seconds_ );
      add( to, "transfers", load.transfers );
      add( to, "failures", load.failures );
      add( to, "bytes", since( before.bytes(), now.bytes() ) );
      add( to, "wireSeconds",
           static_cast<double>( since( before.wire_ns(), now.wire_ns() ) ) / 1e9 );
      add( to, "busySeconds",
           static_cast<double>( since( before.busy_ns(), now.busy_ns() ) ) / 1e9 );
   }
   void addBus( Json &to, const BusLoad &bus ) const {
      const BusLoad &before = busIn( before_, bus );
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
      const Times times = timesBetween( before, bus );
      to.Key( "latency" );
      to.StartObject();
      add( to, "median", times.median );
      add( to, "percentile99", times.ninetyNinth );
      add( to, "worst", times.worst );
      to.EndObject();
      addAll( to, "segments", bus.segment(), [&]( const Segment &segment ) {
         const Segment &earlier = segmentIn( before, segment );
         add( to, "path", segment.path() );
         addTotals( to, earlier.totals(), segment.totals() );
         addAll( to, "chips", segment.chip(), [&]( const ChipLoad &chip ) {
            add( to, "address", uint64_t{ chip.address() } );
            addTotals( to, chipIn( earlier, chip ).totals(), chip.totals() );
         } );
      } );
      addAll( to, "clients", bus.client(), [&]( const Client &client ) {
         const Client &earlier = clientIn( before, client );
         add( to, "user", uint64_t{ client.user() } );
         add( to, "process", uint64_t{ client.process() } );
         add( to, "program", client.program() );
         addTotals( to, earlier.totals(), client.totals() );
         add( to, "transactions", since( earlier.transactions(), client.transactions() ) );
      } );
   }

   const Response &before_;
   const Response &now_;
   const double seconds_;
};

} // namespace

std::string formatLoad( const Response &before, const Response &now, bool chips, bool json ) {
   return json ? JsonWriter( before, now ).write() : Table( before, now, chips ).write();
}

} // namespace SmbusClient
