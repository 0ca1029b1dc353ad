#include "host/serve/ObjectMetrics.h"

#include "boardfiles/HealthKeys.h"

#include <array>
#include <optional>
#include <utility>
#include <vector>

namespace Host {
namespace {

using Health::ValueHealth;
using Metrics::Labels;

// The name of a value. Of "rx_power_2", a value of a module, the last part is the lane.
struct ValueName {
   std::string_view value, lane{};
};

ValueName nameOf( const Reading &reading, BoardFiles::Kind kind ) {
   const std::string_view name = reading.name;
   const size_t last = name.find_last_not_of( "0123456789" );
   if ( kind != BoardFiles::Kind::Module || last + 1 >= name.size() || name[last] != '_' )
      return { name };
   return { name.substr( 0, last ), name.substr( last + 1 ) };
}

Labels labelsOf( const std::string &object, const ValueName &name ) {
   Labels labels{ { "object", object }, { "value", name.value } };
   return name.lane.empty() ? labels : labels.with( "lane", name.lane );
}

std::optional<double> numberIn( const Scalar &scalar ) {
   if ( const auto *flag = std::get_if<bool>( &scalar ) )
      return *flag;
   if ( const auto *whole = std::get_if<int64_t>( &scalar ) )
      return static_cast<double>( *whole );
   if ( const auto *number = std::get_if<double>( &scalar ) )
      return *number;
   return {};
}

// The text of a reading that is good.
std::string textOf( const ObjectReport &object, std::string_view value ) {
   const ValueReport *known = object.find( value );
   const auto *text = known ? std::get_if<std::string>( &known->reading.value ) : nullptr;
   return text ? *text : std::string();
}

void addPresence( const ObjectReport &object, const Reading &presence, BoardFamilies &to ) {
   const bool isThere = presence.state == State::Ok || presence.state == State::Unmanaged;
   if ( !isThere && presence.state != State::Absent )
      return; // nobody knows
   const auto *flag = std::get_if<bool>( &presence.value );
   to[Metric::Present].add( { { "object", object.name }, { "type", object.type } },
                            isThere && ( !flag || *flag ) );
   if ( const std::string text = textOf( object, presence.name ); isThere && !text.empty() )
      to[Metric::Slot].add( { { "object", object.name }, { "description", text } }, 1 );
}

// The limits of the lanes of one quantity. One row for all lanes where they are the same.
class LimitsByLane {
 public:
   LimitsByLane( const std::string &object, BoardFamilies &to ) : object_( object ), to_( to ) {}

   void add( const ValueName &name, const BaseUnit &unit, const ValueHealth &health ) {
      if ( name.value != value_ )
         write();
      value_ = name.value;
      unit_ = &unit;
      lanes_.emplace_back( name.lane, health.limits && !health.limits->ignored
                                         ? *health.limits
                                         : BoardFiles::ValueLimits() );
   }
   void write() {
      bool areSame = true;
      for ( const auto &[lane, limits] : lanes_ )
         areSame = areSame && limits == lanes_.front().second;
      if ( areSame && !lanes_.empty() )
         lanes_ = { { "", lanes_.front().second } };
      for ( const auto &[lane, limits] : std::exchange( lanes_, {} ) )
         write( labelsOf( object_, { value_, lane } ), limits );
   }

 private:
   void write( const Labels &labels, const BoardFiles::ValueLimits &limits ) {
      const std::array<std::pair<const char *, std::optional<double>>, 4> all{
         { { "low_critical", limits.lowCritical },
           { "low_warning", limits.lowWarning },
           { "high_warning", limits.highWarning },
           { "high_critical", limits.highCritical } }
      };
      for ( const auto &[name, limit] : all )
         if ( limit )
            to_.of( *unit_, Told::Limit )
               .add( labels.with( "limit", name ), *limit / unit_->inBase );
   }

   const std::string &object_;
   BoardFamilies &to_;
   std::string_view value_{};
   const BaseUnit *unit_ = nullptr;
   std::vector<std::pair<std::string_view, BoardFiles::ValueLimits>> lanes_{};
};

void addHealth( const Labels &labels, const BaseUnit &unit, const ValueHealth &health,
                BoardFamilies &to ) {
   if ( isBeyond( health.level ) )
      to[Metric::ValueLevel].add( labels, static_cast<double>( health.level ) );
   if ( health.lowest )
      to.of( unit, Told::Lowest ).add( labels, health.lowest->number / unit.inBase );
   if ( health.highest )
      to.of( unit, Told::Highest ).add( labels, health.highest->number / unit.inBase );
}

void addValues( BoardFiles::Kind kind, const ObjectReport &object, BoardFamilies &to ) {
   LimitsByLane limits( object.name, to );
   for ( size_t i = 0; i < object.values.size(); ++i ) {
      const auto &[reading, age] = object.values[i];
      const ValueName name = nameOf( reading, kind );
      const Labels labels = labelsOf( object.name, name );
      const bool isPresence = reading.name == "presence";
      if ( reading.state != object.state && !( isPresence && reading.state == State::Absent ) ) {
         to[Metric::ValueState].add( labels, static_cast<double>( reading.state ) );
         to[Metric::ValueAge].add( labels, age );
      }
      if ( isPresence ) {
         addPresence( object, reading, to );
         continue;
      }
      const BaseUnit *unit = baseUnitOf( reading.unit );
      if ( const auto number = numberIn( reading.value ); number && reading.state == State::Ok ) {
         if ( unit )
            to.of( *unit, Told::Value ).add( labels, *number / unit->inBase );
         else
            to[Metric::Signal].add( labels, *number );
      }
      if ( !unit || !object.health || i >= object.health->values.size() )
         continue;
      addHealth( labels, *unit, object.health->values[i], to );
      limits.add( name, *unit, object.health->values[i] );
   }
   limits.write();
}

} // namespace

void addObject( const BoardFiles::ObjectDescription &description, const ObjectReport &object,
                BoardFamilies &to ) {
   const Labels labels{ { "object", object.name }, { "type", object.type } };
   to[Metric::ObjectState].add( labels, static_cast<double>( object.state ) );
   if ( description.hasValues() )
      to[Metric::ObjectAge].add( labels, object.age );
   if ( object.health ) {
      to[Metric::ObjectLevel].add( labels, static_cast<double>( object.health->level ) );
      if ( !object.health->cause.empty() )
         to[Metric::ObjectCause].add(
            { { "object", object.name }, { "cause", object.health->cause } }, 1 );
   }
   addValues( description.kind, object, to );
   if ( description.kind != BoardFiles::Kind::Module )
      return;
   if ( const std::string serial = textOf( object, "serial" ), vendor = textOf( object, "vendor" ),
        part = textOf( object, "part_number" );
        !( serial + vendor + part ).empty() )
      to[Metric::Module].add( { { "object", object.name },
                                { "cage", description.health.in.value_or( "" ) },
                                { "vendor", vendor },
                                { "part_number", part },
                                { "serial", serial } },
                              1 );
}

} // namespace Host
