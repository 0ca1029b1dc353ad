#include "host/serve/BusMetrics.h"

#include "smbus/BusLoads.h"

#include <array>
#include <utility>

namespace Host {
namespace {

using Metrics::Labels;

// Seconds. On a wire a transaction takes a millisecond and more; a simulated one far less.
constexpr std::array<double, 12> bounds{ 1e-05, 3e-05, 1e-04, 3e-04, 0.001, 0.003,
                                         0.01,  0.03,  0.1,   0.3,   1,     3 };

// The server tells fine steps. One counts where its longest time does.
Metrics::Histogram histogramOf( const SmbusControl::BusLoad &bus ) {
   Metrics::Histogram histogram;
   for ( const double bound : bounds )
      histogram.buckets.push_back( { .upTo = bound } );
   for ( const SmbusControl::Latency &step : bus.latency() ) {
      histogram.count += step.count();
      for ( Metrics::Histogram::Bucket &bucket : histogram.buckets )
         if ( static_cast<double>( step.up_to_ns() ) / 1e9 <= bucket.upTo )
            bucket.count += step.count();
   }
   if ( bus.has_latency_ns() )
      histogram.sum = static_cast<double>( bus.latency_ns() ) / 1e9;
   return histogram;
}

constexpr double longest = 60; // seconds

} // namespace

void addBusses( const KnownLoads &known, BoardFamilies &to ) {
   to[Metric::BusAccountsAge].add( {}, known.age );
   if ( !known.loads || known.age > longest )
      return;
   for ( const SmbusControl::BusLoad &bus : known.loads->bus() ) {
      const Labels labels{ { "bus", bus.bus() } };
      const SmbusControl::Totals &totals = bus.totals();
      const std::pair<Metric, double> numbers[] = {
         { Metric::BusTransfers, static_cast<double>( totals.transfers() ) },
         { Metric::BusFailedTransfers, static_cast<double>( totals.failures() ) },
         { Metric::BusBytes, static_cast<double>( totals.bytes() ) },
         { Metric::BusWireTime, static_cast<double>( totals.wire_ns() ) / 1e9 },
         { Metric::BusBusyTime, static_cast<double>( totals.busy_ns() ) / 1e9 },
         { Metric::BusFailedTransactions, static_cast<double>( bus.failed_transactions() ) },
         { Metric::BusHeld, bus.has_held() }
      };
      for ( const auto &[metric, number] : numbers )
         to[metric].add( labels, number );
      for ( const auto &[kind, count] : Bus::errorsBetween( {}, bus.errors() ) )
         to[Metric::BusErrors].add( labels.with( "kind", kind ), static_cast<double>( count ) );
      to[Metric::BusTransaction].add( labels, histogramOf( bus ) );
   }
}

} // namespace Host
