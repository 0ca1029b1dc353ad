#include "boardfiles/HealthKeys.h"

#include "boardfiles/Nearest.h"

#include <fmt/format.h>

#include <algorithm>

namespace BoardFiles {

namespace {

struct NumberOfKind {
   Kind kind;
   std::string_view value;
   std::string_view unit;
};

constexpr NumberOfKind numbers[] = { { Kind::TempSensor, "temperature", "°C" },
                                     { Kind::Fan, "speed", "rpm" },
                                     { Kind::Fan, "duty", "%" },
                                     { Kind::Psu, "input_current", "A" },
                                     { Kind::Psu, "output_current", "A" },
                                     { Kind::Psu, "input_voltage", "V" },
                                     { Kind::Psu, "output_voltage", "V" },
                                     { Kind::Psu, "input_power", "W" },
                                     { Kind::Psu, "output_power", "W" },
                                     // of the module in the cage
                                     { Kind::Xcvr, "temperature", "°C" },
                                     { Kind::Xcvr, "supply_voltage", "V" },
                                     { Kind::Xcvr, "tx_bias", "mA" },
                                     { Kind::Xcvr, "tx_power", "mW" },
                                     { Kind::Xcvr, "rx_power", "mW" } };

struct NamedLimit {
   std::string_view name;
   std::optional<double> ValueLimits::*limit;
};

// From the lowest up.
constexpr NamedLimit limitNames[] = { { "low_critical", &ValueLimits::lowCritical },
                                      { "low_warning", &ValueLimits::lowWarning },
                                      { "high_warning", &ValueLimits::highWarning },
                                      { "high_critical", &ValueLimits::highCritical } };

// A value at the inner one of two low limits, or of two high ones, must be good.
void checkOrder( const ValueLimits &limits, const Json &json, Findings &findings ) {
   const NamedLimit *before = nullptr;
   for ( const NamedLimit &next : limitNames ) {
      if ( !( limits.*next.limit ) )
         continue;
      if ( before && limits.*before->limit > limits.*next.limit )
         report( findings, json.find( next.name )->place(),
                 fmt::format( "\"{}\" ({}) is below \"{}\" ({})", next.name,
                              *( limits.*next.limit ), before->name, *( limits.*before->limit ) ) );
      before = &next;
   }
}

void checkHysteresis( const ValueLimits &limits, const Json &json, Findings &findings ) {
   const auto low = limits.lowWarning ? limits.lowWarning : limits.lowCritical;
   const auto high = limits.highWarning ? limits.highWarning : limits.highCritical;
   if ( low && high && *low <= *high && limits.hysteresis > *high - *low )
      report( findings, json.find( "hysteresis" )->place(),
              fmt::format( "the hysteresis ({}) is wider than the band from {} to {}: no value "
                           "would ever be good again",
                           limits.hysteresis, *low, *high ) );
}

ValueLimits limitsIn( const Json &json, std::optional<std::string_view> unit, Findings &findings ) {
   ValueLimits limits;
   for ( const NamedLimit &named : limitNames )
      limits.*named.limit = json.numberOf( named.name );
   limits.hysteresis = json.numberOf( "hysteresis" ).value_or( 0 );
   limits.hold = json.numberOf( "hold" ).value_or( 0 );
   const Json *latched = json.find( "latched" );
   limits.latched = latched && latched->isTrue();
   checkOrder( limits, json, findings );
   checkHysteresis( limits, json, findings );
   if ( const auto named = json.textOf( "unit" ); unit && named && *named != *unit )
      report( findings, json.find( "unit" )->place(),
              fmt::format( "the unit is \"{}\", not \"{}\"", *unit, *named ) );
   return limits;
}

std::vector<std::string> valuesOf( Kind kind ) {
   std::vector<std::string> values;
   for ( const NumberOfKind &number : numbers )
      if ( number.kind == kind )
         values.emplace_back( number.value );
   return values;
}

} // namespace

std::optional<std::string_view> unitOf( Kind kind, std::string_view value ) {
   const auto known =
      std::find_if( std::begin( numbers ), std::end( numbers ), [&]( const NumberOfKind &number ) {
         return number.kind == kind && number.value == value;
      } );
   if ( known == std::end( numbers ) )
      return {};
   return known->unit;
}

HealthKeys healthKeysIn( const Json &json, std::optional<Kind> kind, Findings &findings ) {
   HealthKeys keys{ .in = json.textOf( "in" ) };
   if ( const Json *in = json.find( "in" ) )
      keys.inPlace = in->place();
   const Json *wanted = json.find( "wanted" );
   keys.wanted = wanted && wanted->isTrue();
   if ( const Json *all = json.find( "limits" ) )
      for ( const Json::Member &member : all->members() ) {
         const auto unit = kind ? unitOf( *kind, member.key ) : std::nullopt;
         if ( kind && !unit )
            report( findings, member.place,
                    fmt::format( "an object of type \"{}\" has no number \"{}\"{}", nameOf( *kind ),
                                 member.key, didYouMean( member.key, valuesOf( *kind ) ) ) );
         const ValueLimits &limits = keys.limits[member.key] =
            limitsIn( member.value, unit, findings );
         // Of a temperature there are "alert" and "critical", too.
         if ( !limits.any() && kind != Kind::TempSensor )
            report( findings, member.value.place(), "has no limit" );
      }
   if ( const Json *follows = json.find( "follows" ) ) {
      const Json *fan = follows->find( "fan" );
      keys.follows = FollowRule{ .fan = follows->textOf( "fan" ).value_or( "" ),
                                 .seconds = follows->numberOf( "seconds" ).value_or( 0 ),
                                 .percent = follows->numberOf( "percent" ).value_or( 0 ),
                                 .fanPlace = fan ? fan->place() : follows->place() };
   }
   return keys;
}

BoardRule ruleIn( const Json &json ) {
   BoardRule rule{ .name = json.textOf( "name" ).value_or( "" ), .place = json.place() };
   for ( const Json &member : json.elementsOf( "members" ) ) {
      rule.members.emplace_back( member.toText().value_or( "" ) );
      rule.memberPlaces.push_back( member.place() );
   }
   for ( const Json &word : json.elementsOf( "same" ) )
      rule.same.emplace_back( word.toText().value_or( "" ) );
   rule.wanted = json.unsignedOf( "wanted" ).value_or( 0 );
   rule.needed = json.unsignedOf( "needed" ).value_or( 0 );
   return rule;
}

} // namespace BoardFiles
