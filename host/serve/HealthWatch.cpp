#include "host/serve/HealthWatch.h"

#include "host/session/ServerProbe.h"

#include <chrono>

namespace Host {

using namespace std::chrono;

Health::Instant instantNow() {
   return { steady_clock::now(), floor<milliseconds>( system_clock::now() ) };
}

HealthWatch::HealthWatch( const BoardFiles::Board &board, const ServerAccounts &accounts,
                          double settle, Told told )
   : board_( board ), accounts_( accounts ), monitor_( board, settle ), told_( std::move( told ) ) {
}

void HealthWatch::knows( size_t object, const std::vector<Health::Pmbus::Limit> &limits ) {
   std::map<std::string, BoardFiles::ValueLimits> byQuantity;
   for ( const Health::Pmbus::Limit &limit : limits ) {
      BoardFiles::ValueLimits &own = byQuantity[limit.quantity];
      const bool isCritical = limit.level == Health::Level::Critical;
      ( limit.isHigh ? ( isCritical ? own.highCritical : own.highWarning )
                     : ( isCritical ? own.lowCritical : own.lowWarning ) ) = limit.number;
   }
   knows( object, byQuantity );
}

void HealthWatch::knows( size_t object,
                         const std::map<std::string, BoardFiles::ValueLimits> &limits ) {
   for ( const auto &[value, own] : limits )
      monitor_.knows( object, value, own );
}

void HealthWatch::look( const Health::BoardReport &report, const std::string &plugInFault ) {
   if ( asks_ )
      return;
   Health::Surroundings surroundings{ .plugIn = plugInFault };
   if ( !Health::hasUnreadable( report ) )
      return update( report, surroundings );
   surroundings.server = whyNoServer( board_.server );
   asks_ = true;
   accounts_.askEvidence(
      [this, report, surroundings]( Health::Evidence evidence, const std::string &error ) mutable {
         asks_ = false;
         if ( error.empty() )
            surroundings.evidence = std::move( evidence );
         update( report, surroundings );
      } );
}

void HealthWatch::update( const Health::BoardReport &report,
                          const Health::Surroundings &surroundings ) {
   told_( monitor_.update( report, surroundings, instantNow() ) );
}

} // namespace Host
