#include "health/Inspection.h"
#include "health/pmbus/Conditions.h"

#include <fmt/format.h>

namespace Health {

namespace {

struct NamedCondition {
   Pmbus::Condition::Kind kind;
   std::string_view name;
   bool takesOutput;
};

constexpr NamedCondition conditionNames[] = {
   { Pmbus::Condition::Kind::InputLost, "input lost", true },
   { Pmbus::Condition::Kind::OutputFailed, "output failed", true },
   { Pmbus::Condition::Kind::OverTemperature, "too hot", false },
   { Pmbus::Condition::Kind::FanFailed, "fan failed", false },
   { Pmbus::Condition::Kind::Communication, "communication", false },
   { Pmbus::Condition::Kind::Other, "fault", false }
};

} // namespace

// What a supply says of itself, in the order in which one explains the other. One finding for each
// kind, with the words of all of that kind.
void Inspection::inspectSupply( size_t object ) {
   const ValueReport *read = report_[object].find( registers );
   const auto *text = read && reach_[object] == Reach::Good && read->reading.state == State::Ok
                         ? std::get_if<std::string>( &read->reading.value )
                         : nullptr;
   if ( !text )
      return;
   const size_t supply = links_.on[object].value_or( object );
   const auto conditions = Pmbus::describe( Pmbus::registersIn( *text ) );
   for ( const NamedCondition &named : conditionNames ) {
      std::vector<Pmbus::Condition> own;
      Finding finding{ .kind = Finding::Kind::Supply,
                       .key = fmt::format( "{} {}", report_[supply].name, named.name ),
                       .object = supply,
                       .value = registers };
      for ( const Pmbus::Condition &condition : conditions )
         if ( condition.kind == named.kind && condition.level != Level::Ok ) {
            own.push_back( condition );
            if ( condition.level == Level::Critical )
               finding.level = Level::Critical;
         }
      if ( own.empty() )
         continue;
      finding.words = Pmbus::sentence( own );
      if ( const auto dead = supplyOf( supply, dead_ ) )
         finding.explainedBy = { *dead };
      const bool isOff = finding.level == Level::Critical;
      const size_t number = add( std::move( finding ) );
      if ( named.kind == Pmbus::Condition::Kind::FanFailed )
         fansFailed_.emplace( supply, number );
      else if ( named.kind == Pmbus::Condition::Kind::OverTemperature )
         hot_.emplace( supply, number );
      else if ( named.takesOutput && isOff )
         dead_.emplace( supply, number );
   }
}

} // namespace Health
