#include "health/Inspection.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace Health {

namespace {

// A value of a lane, "rx_power_2", or a flag of one, "rx_los 2".
struct OfLane {
   std::string name{}; // "rx_power"
   std::string lane{}; // empty: of the module
};

OfLane split( const std::string &text, char separator ) {
   const size_t at = text.find_last_of( separator );
   const bool isNumber = at != std::string::npos && at + 1 < text.size() &&
                         text.find_first_not_of( "0123456789", at + 1 ) == std::string::npos;
   return isNumber ? OfLane{ text.substr( 0, at ), text.substr( at + 1 ) } : OfLane{ text, "" };
}

struct LaneFlag {
   std::string_view name;
   Level level;
   std::string_view words;
   std::string_view value; // that a limit of explains it
};

constexpr LaneFlag laneFlags[] = {
   { "tx_fault", Level::Critical, "the transmitter has failed", "" },
   { "rx_los", Level::Warning, "no light is received", "rx_power" },
   { "tx_los", Level::Warning, "no signal comes from the switch", "" },
   { "rx_loss_of_lock", Level::Warning, "the receiver can't recover the clock", "rx_power" },
   { "tx_loss_of_lock", Level::Warning, "the transmitter can't recover the clock", "" },
   { "tx_equalizer_fault", Level::Warning, "the transmitter's equalizer has failed", "" }
};

const LaneFlag *laneFlagOf( const std::string &name ) {
   const auto known = std::find_if( std::begin( laneFlags ), std::end( laneFlags ),
                                    [&]( const LaneFlag &one ) { return one.name == name; } );
   return known == std::end( laneFlags ) ? nullptr : known;
}

// A finding of one lane or of several.
struct OfLanes {
   Finding finding{};
   std::vector<std::string> lanes{};

   void add( const std::string &lane ) {
      if ( !lane.empty() && std::find( lanes.begin(), lanes.end(), lane ) == lanes.end() )
         lanes.push_back( lane );
   }
   Finding withLanes() && {
      if ( !lanes.empty() )
         finding.words +=
            fmt::format( " on lane{} {}", lanes.size() == 1 ? "" : "s", fmt::join( lanes, ", " ) );
      return std::move( finding );
   }
};

std::vector<std::string> flagsIn( const std::string &text ) {
   std::vector<std::string> flags;
   for ( size_t at = 0; text != "ok" && at < text.size(); ) {
      const size_t end = std::min( text.find( ", ", at ), text.size() );
      flags.push_back( text.substr( at, end - at ) );
      at = end + 2;
   }
   return flags;
}

} // namespace

// One finding for each quantity, whatever the number of its lanes: a fibre has all of them.
void Inspection::inspectModule( size_t object ) {
   const ObjectReport &report = report_[object];
   std::map<std::string, OfLanes> groups;
   for ( size_t i = 0; i < report.values.size(); ++i ) {
      const ValueReport &value = report.values[i];
      if ( !isBeyond( watches_[object][i].watch.level() ) || isBad( value.reading.state ) )
         continue;
      const auto [name, lane] = split( value.reading.name, '_' );
      OfLanes &group = groups[name];
      const Finding found = limitFinding( object, i );
      if ( group.finding.key.empty() ||
           ( found.level == Level::Critical && group.finding.level == Level::Warning ) )
         group.finding = found;
      group.finding.key = fmt::format( "{} {} limit", report.name, name );
      group.add( lane );
   }
   LimitsByQuantity limits;
   for ( auto &[name, group] : groups )
      limits[name] = add( std::move( group ).withLanes() );
   inspectFlags( object, limits );
}

// A flag stays in the module until it is read. One of a threshold that the value has come back from
// tells what was between two readings; but not when the reading before this one was beyond it, too.
void Inspection::inspectFlags( size_t object, const LimitsByQuantity &limits ) {
   const ObjectReport &report = report_[object];
   const ValueReport *read = report.find( flags );
   const auto *text = read ? std::get_if<std::string>( &read->reading.value ) : nullptr;
   if ( !text || read->reading.state != State::Ok )
      return;
   const auto isOld = [&]( const std::string &value ) {
      const auto &watches = watches_[object];
      const auto known = std::find_if( watches.begin(), watches.end(),
                                       [&]( const auto &one ) { return one.name == value; } );
      return known != watches.end() && known->watch.level() == Level::Ok &&
             !known->watch.wasGoodBefore();
   };
   std::map<std::string, OfLanes> told;
   for ( const std::string &flag : flagsIn( *text ) ) {
      const bool isAlarm = flag.ends_with( " alarm" );
      Finding finding{ .kind = Finding::Kind::Limit, .object = object, .value = flags };
      OfLane of;
      if ( isAlarm || flag.ends_with( " warning" ) ) {
         const size_t blank = flag.find( ' ' );
         const std::string value = flag.substr( 0, blank );
         of = split( value, '_' );
         if ( limits.contains( of.name ) || isOld( value ) )
            continue;
         finding.key = fmt::format( "{} {} flag", report.name, of.name );
         finding.words =
            fmt::format( "the module has told of a{}, which is over", flag.substr( blank ) );
      } else {
         of = split( flag, ' ' );
         const LaneFlag *known = laneFlagOf( of.name );
         const std::string value = known ? std::string( known->value ) : "";
         const auto limit = limits.find( value );
         if ( limit == limits.end() && ( isOld( value ) || isOld( value + "_" + of.lane ) ) )
            continue;
         finding.key = fmt::format( "{} {}", report.name, of.name );
         finding.words = known ? std::string( known->words ) : "the module tells: " + of.name;
         finding.level = known ? known->level : Level::Warning;
         if ( limit != limits.end() )
            finding.explainedBy = { limit->second };
      }
      const auto [group, isNew] = told.try_emplace( finding.key, OfLanes{ finding } );
      if ( !isNew && isAlarm )
         group->second.finding.words = finding.words;
      group->second.add( of.lane );
   }
   for ( auto &[key, group] : told )
      add( std::move( group ).withLanes() );
}

} // namespace Health
