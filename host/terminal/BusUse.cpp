#include "host/terminal/BusUse.h"

#include "boardfiles/Json.h"

#include <algorithm>
#include <fmt/ranges.h>

namespace Host {
namespace {

uint64_t countOf( const BoardFiles::Json &json, const char *key ) {
   return static_cast<uint64_t>( json.numberOf( key ).value_or( 0 ) );
}

BusCounts earlier( const std::optional<BusAccounts> &before, const BusCounts &now ) {
   if ( before )
      for ( const BusCounts &bus : before->busses )
         if ( bus.bus == now.bus && bus.transfers <= now.transfers &&
              bus.errors.size() == now.errors.size() )
            return bus;
   BusCounts none{ .errors = now.errors };
   for ( auto &[kind, count] : none.errors )
      count = 0;
   return none;
}

} // namespace

std::optional<BusAccounts> readBusses( const std::string &text ) {
   BoardFiles::Findings findings;
   const auto json = BoardFiles::parseJson( text, "busses", findings );
   if ( !json || !json->find( "busses" ) )
      return {};
   BusAccounts accounts{ .seconds = json->numberOf( "seconds" ).value_or( 0 ) };
   for ( const BoardFiles::Json &bus : json->elementsOf( "busses" ) ) {
      BusCounts counts{ .bus = bus.textOf( "bus" ).value_or( "" ),
                        .transfers = countOf( bus, "transfers" ),
                        .failures = countOf( bus, "failures" ),
                        .wireSeconds = bus.numberOf( "wireSeconds" ).value_or( 0 ) };
      if ( const BoardFiles::Json *errors = bus.find( "errors" ) )
         for ( const char *kind : { "nack", "pec", "timeout", "held-low", "other" } )
            counts.errors.emplace_back( kind, countOf( *errors, kind ) );
      accounts.busses.push_back( std::move( counts ) );
   }
   return accounts;
}

std::vector<BusUse> useBetween( const std::optional<BusAccounts> &before, const BusAccounts &now ) {
   const bool isSince = before && before->seconds < now.seconds;
   const double seconds = now.seconds - ( isSince ? before->seconds : 0 );
   std::vector<BusUse> all;
   for ( const BusCounts &bus : now.busses ) {
      const BusCounts then = earlier( isSince ? before : std::nullopt, bus );
      BusUse use{ .bus = bus.bus, .failures = bus.failures - then.failures, .all = bus };
      if ( seconds > 0 ) {
         use.share = ( bus.wireSeconds - then.wireSeconds ) / seconds;
         use.transfersPerSecond = static_cast<double>( bus.transfers - then.transfers ) / seconds;
      }
      std::vector<std::string> errors;
      for ( size_t i = 0; i < bus.errors.size(); ++i )
         if ( const uint64_t count = bus.errors[i].second - then.errors[i].second )
            errors.push_back( fmt::format( "{} {}", count, bus.errors[i].first ) );
      use.errors = fmt::format( "{}", fmt::join( errors, ", " ) );
      all.push_back( std::move( use ) );
   }
   return all;
}

} // namespace Host
