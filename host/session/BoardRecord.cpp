#include "host/session/BoardRecord.h"

#include "health/pmbus/Conditions.h"
#include "host/plugin/Action.h"
#include "host/plugin/SupplyReader.h"

#include <cmath>
#include <fmt/format.h>
#include <pl.h>

namespace Host {
namespace {

constexpr auto settingName = "setting";

// In percent with one decimal. A speed that couldn't be read gives a duty with the same fault.
Reading dutyOf( Reading speed, double highestRpm ) {
   if ( const auto *rpm = std::get_if<int64_t>( &speed.value ) )
      speed.value = std::round( 1000 * static_cast<double>( *rpm ) / highestRpm ) / 10;
   speed.name = "duty";
   speed.unit = "%";
   return speed;
}

// What the registers say. Where they couldn't be read, a reading with the same fault.
Reading statusOf( Reading registers ) {
   if ( const auto *text = std::get_if<std::string>( &registers.value ) )
      registers.value =
         Health::Pmbus::sentence( Health::Pmbus::describe( Health::Pmbus::registersIn( *text ) ) );
   registers.name = "status";
   return registers;
}
Reading statusWordOf( Reading registers ) {
   if ( const auto *text = std::get_if<std::string>( &registers.value ) )
      registers.value =
         fmt::format( "{:#06x}", Health::Pmbus::registersIn( *text )[Health::Pmbus::StatusWord] );
   registers.name = "status_word";
   return registers;
}

} // namespace

BoardRecord::BoardRecord( const BoardFiles::Board &board, const Limits &limits, Time now )
   : board_( board ), limits_( limits ), objects_( board.objects.size(), ObjectRecord( now ) ) {}

void BoardRecord::read( size_t object, const Reading &reading, Time at ) {
   const BoardFiles::ObjectDescription &description = board_.objects[object];
   // What was in a slot is known also while it can't be read. A measured value would be misleading.
   if ( reading.name == statusRegistersName ) {
      objects_[object].read( statusOf( reading ), at );
      objects_[object].read( statusWordOf( reading ), at );
   }
   if ( description.kind == BoardFiles::Kind::Slot && reading.state == State::Unreadable )
      objects_[object].missed( reading, at );
   else
      objects_[object].read( reading, at );
   if ( description.kind == BoardFiles::Kind::Fan && description.fullScale > 0 )
      objects_[object].read( dutyOf( reading, description.fullScale ), at );
}

void BoardRecord::ledWasSet( size_t object, int64_t number, Time now ) {
   objects_[object].keep( { .name = settingName, .value = std::string( nameOfSetting( number ) ) },
                          now );
}

void BoardRecord::fanWasSet( size_t object, int64_t rpm, Time now ) {
   objects_[object].keep( { .name = "target", .unit = "rpm", .value = rpm }, now );
}

bool BoardRecord::blinks( size_t object ) const {
   const Reading *last = objects_[object].find( settingName );
   return last && last->value == Scalar( std::string( nameOfSetting( PL_LED_BEACON ) ) );
}

const std::vector<Health::Pmbus::Limit> &BoardRecord::limits( size_t object ) const {
   static const std::vector<Health::Pmbus::Limit> none;
   const auto known = supplyLimits_.find( object );
   return known == supplyLimits_.end() ? none : known->second;
}

BoardReport BoardRecord::report( Time now ) const {
   BoardReport report;
   for ( size_t i = 0; i < objects_.size(); ++i ) {
      const BoardFiles::ObjectDescription &description = board_.objects[i];
      const auto staleAfter = limits_.once
                                 ? Clock::duration::max()
                                 : limits_.staleAfter * limits_.periodOf( description.kind );
      report.push_back( objects_[i].report( description, staleAfter, now ) );
   }
   return report;
}

} // namespace Host
