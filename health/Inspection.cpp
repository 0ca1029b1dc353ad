#include "health/Inspection.h"

#include "health/Texts.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace Health {

namespace {

constexpr auto target = "target";

std::optional<double> numberIn( const Scalar &value ) {
   if ( const auto *whole = std::get_if<int64_t>( &value ) )
      return static_cast<double>( *whole );
   if ( const auto *number = std::get_if<double>( &value ) )
      return *number;
   return {};
}

} // namespace

Links::Links( const BoardFiles::Board &board ) {
   const auto numberOf = [&board]( const std::string &name ) -> std::optional<size_t> {
      for ( size_t i = 0; i < board.objects.size(); ++i )
         if ( board.objects[i].name == name )
            return i;
      return {};
   };
   for ( const BoardFiles::ObjectDescription &object : board.objects ) {
      on.push_back( object.health.in ? numberOf( *object.health.in ) : std::nullopt );
      fan.push_back( object.health.follows ? numberOf( object.health.follows->fan )
                                           : std::nullopt );
   }
   for ( const BoardFiles::BoardRule &rule : board.rules ) {
      members.emplace_back();
      for ( const std::string &member : rule.members )
         if ( const auto number = numberOf( member ) )
            members.back().push_back( *number );
   }
   std::vector<size_t> depths;
   for ( size_t i = 0; i < on.size(); ++i ) {
      order.push_back( i );
      depths.push_back( 0 );
      for ( auto at = on[i]; at; at = on[*at] )
         depths.back() += 2;
   }
   for ( const auto &followed : fan )
      if ( followed )
         depths[*followed] |= 1;
   std::stable_sort( order.begin(), order.end(),
                     [&]( size_t one, size_t other ) { return depths[one] < depths[other]; } );
}

Inspection::Inspection( const BoardFiles::Board &board, const Links &links,
                        const BoardReport &report, const Surroundings &surroundings,
                        const KnownLimits &known, Watches &watches, const Instant &now )
   : board_( board ), links_( links ), report_( report ), surroundings_( surroundings ),
     known_( known ), watches_( watches ), now_( now ), wiring_( board ) {
   findReaches();
   const bool anyFailed = std::find( reach_.begin(), reach_.end(), Reach::Failed ) != reach_.end();
   if ( hasUnreadable( report ) )
      wiring_.look( reach_, surroundings.evidence ? &*surroundings.evidence : nullptr );
   if ( !surroundings.plugIn.empty() )
      add( { .kind = Finding::Kind::PlugIn,
             .key = "plug-in",
             .level = Level::Critical,
             .words = surroundings.plugIn } );
   else if ( anyFailed && !surroundings.server.empty() )
      add( { .kind = Finding::Kind::Server,
             .key = "server",
             .level = Level::Critical,
             .words = surroundings.server } );
   for ( size_t i = 0; i < report.size(); ++i )
      inspectSupply( i );
   for ( const size_t object : links.order )
      inspect( object );
   for ( size_t i = 0; i < board.rules.size(); ++i )
      inspectRule( i );
}

void Inspection::findReaches() {
   for ( const ObjectReport &object : report_ ) {
      const ValueReport *there = object.find( presence );
      if ( isBad( object.state ) )
         reach_.push_back( Reach::Failed );
      else if ( there && there->reading.state == State::Absent )
         reach_.push_back( Reach::Absent );
      else if ( object.values.empty() )
         reach_.push_back( Reach::NotRead );
      else
         reach_.push_back( Reach::Good );
   }
   // What is on an absent module is absent, too.
   for ( size_t i = 0; i < reach_.size(); ++i )
      if ( absentAt( i ) )
         reach_[i] = Reach::Absent;
}

// The absent module that the object is on, or is.
std::optional<size_t> Inspection::absentAt( size_t object ) const {
   for ( std::optional<size_t> at = object; at; at = links_.on[*at] ) {
      const ValueReport *there = report_[*at].find( presence );
      if ( there && there->reading.state == State::Absent )
         return at;
   }
   return {};
}

// One of the findings of supplies: of that which the object is on, or is.
std::optional<size_t> Inspection::supplyOf( size_t object,
                                            const std::map<size_t, size_t> &findings ) const {
   for ( std::optional<size_t> at = object; at; at = links_.on[*at] )
      if ( const auto finding = findings.find( *at ); finding != findings.end() )
         return finding->second;
   return {};
}

// What the supply that the object is on says of itself.
std::optional<size_t> Inspection::explanationOfLimit( size_t object ) const {
   if ( const auto dead = supplyOf( object, dead_ ) )
      return dead;
   if ( board_.objects[object].kind == BoardFiles::Kind::Fan )
      return supplyOf( object, fansFailed_ );
   if ( board_.objects[object].kind == BoardFiles::Kind::TempSensor )
      return supplyOf( object, hot_ );
   return {};
}

bool Inspection::isKnown( size_t object, const std::string &value ) const {
   if ( reach_[object] != Reach::Good )
      return false;
   const ValueReport *read = value.empty() ? nullptr : report_[object].find( value );
   return value.empty() || ( read && read->reading.state == State::Ok );
}

bool Inspection::isGone( size_t object ) const {
   const auto module = absentAt( object );
   return module && !board_.objects[*module].health.wanted;
}

bool Inspection::isKnownOfSupply( size_t supply ) const {
   for ( size_t i = 0; i < report_.size(); ++i )
      if ( links_.on[i].value_or( i ) == supply && report_[i].find( registers ) )
         return isKnown( i, registers );
   return false;
}

size_t Inspection::add( Finding finding ) {
   byKey_.emplace( finding.key, findings_.size() );
   findings_.push_back( std::move( finding ) );
   return findings_.size() - 1;
}

size_t Inspection::addOnce( const Finding &finding ) {
   const auto known = byKey_.find( finding.key );
   return known == byKey_.end() ? add( finding ) : known->second;
}

// Why the object can't be read, where that isn't its own fault.
std::optional<size_t> Inspection::explanationOf( size_t object ) {
   for ( const char *all : { "plug-in", "server" } )
      if ( const auto known = byKey_.find( all ); known != byKey_.end() )
         return known->second;
   if ( const auto wiring = wiring_.explain( object ) )
      return addOnce( *wiring );
   if ( const auto dead = supplyOf( object, dead_ ) )
      return dead;
   // A fan module is as good as its rotors, which come before it.
   for ( const Finding &one : findings_ )
      if ( one.object != noObject && links_.fan[one.object] == object )
         return byKey_.at( one.key );
   for ( auto at = links_.on[object]; at; at = links_.on[*at] )
      if ( const auto above = byKey_.find( report_[*at].name + " unreadable" );
           above != byKey_.end() )
         return above->second;
   // While one bus keeps the plug-in busy, the values of others get old.
   if ( report_[object].state == State::Stale )
      for ( size_t i = 0; i < findings_.size(); ++i )
         if ( findings_[i].kind == Finding::Kind::Bus )
            return i;
   return {};
}

void Inspection::inspect( size_t object ) {
   const ObjectReport &report = report_[object];
   watch( object );
   if ( reach_[object] == Reach::Absent ) {
      const size_t module = *absentAt( object );
      if ( !board_.objects[module].health.wanted )
         return;
      const size_t absence = addOnce( { .kind = Finding::Kind::Absent,
                                        .key = report_[module].name + " absent",
                                        .object = module,
                                        .value = presence,
                                        .words = "there is no module" } );
      if ( object != module )
         add( { .key = report.name + " absent", .object = object, .explainedBy = { absence } } );
      return;
   }
   if ( reach_[object] == Reach::Failed ) {
      const auto explanation = explanationOf( object );
      Finding finding{ .key = report.name + " unreadable",
                       .object = object,
                       .words = report.state == State::Stale
                                   ? "its values are old"
                                   : "can't be read: " + toText( report.fault ),
                       .needsTime = true };
      if ( explanation )
         finding.explainedBy = { *explanation };
      add( finding );
      return;
   }
   inspectValues( object );
   inspectFollowing( object );
}

// Gives the watches what was read.
void Inspection::watch( size_t object ) {
   std::vector<WatchedValue> &watched = watches_[object];
   const auto &values = report_[object].values;
   for ( size_t i = 0; i < values.size(); ++i ) {
      const Reading &reading = values[i].reading;
      if ( i == watched.size() || watched[i].name != reading.name ) {
         const auto &all = board_.objects[object].health.limits;
         const auto limits = all.find( reading.name );
         const auto place = watched.insert(
            watched.begin() + static_cast<std::ptrdiff_t>( i ),
            { reading.name,
              ValueWatch( limits == all.end() ? BoardFiles::ValueLimits() : limits->second ) } );
         if ( const auto known = known_.find( object ); known != known_.end() )
            if ( const auto own = known->second.find( reading.name ); own != known->second.end() )
               place->watch.knows( own->second );
      }
      const bool isThere = reach_[object] == Reach::Good && reading.state == State::Ok;
      if ( !isThere )
         watched[i].watch.unknown( now_ );
      else
         watched[i].watch.known( reading.unit.empty() ? std::nullopt : numberIn( reading.value ),
                                 now_, values[i].age );
   }
}

void Inspection::inspectValues( size_t object ) {
   const ObjectReport &report = report_[object];
   for ( size_t i = 0; i < report.values.size(); ++i ) {
      const Reading &reading = report.values[i].reading;
      const ValueWatch &watch = watches_[object][i].watch;
      Finding finding{ .object = object, .value = reading.name, .unit = reading.unit };
      if ( isBad( reading.state ) ) {
         finding.key = fmt::format( "{} {} unreadable", report.name, reading.name );
         finding.words = "can't be read: " + toText( reading.fault );
         finding.needsTime = true;
         if ( const auto explanation = explanationOf( object ) )
            finding.explainedBy = { *explanation };
         add( finding );
      } else if ( isBeyond( watch.level() ) && !isModule( object ) ) {
         add( limitFinding( object, i ) );
      }
   }
   if ( isModule( object ) )
      inspectModule( object );
}

Finding Inspection::limitFinding( size_t object, size_t value ) const {
   const Reading &reading = report_[object].values[value].reading;
   const ValueWatch &watch = watches_[object][value].watch;
   Finding finding{ .kind = Finding::Kind::Limit,
                    .key = fmt::format( "{} {} limit", report_[object].name, reading.name ),
                    .object = object,
                    .value = reading.name,
                    .level = watch.level(),
                    .number = numberIn( reading.value ),
                    .limit = watch.limit(),
                    .unit = reading.unit };
   finding.words =
      fmt::format( "{} is {}", quantityText( finding.number.value_or( 0 ), reading.unit ),
                   watch.crossed( reading.unit ) );
   // That a module was pulled may be seen later than what that does.
   finding.needsTime = links_.on[object].has_value();
   if ( const auto explanation = explanationOfLimit( object ) )
      finding.explainedBy = { *explanation };
   return finding;
}

bool Inspection::isModule( size_t object ) const {
   return board_.objects[object].kind == BoardFiles::Kind::Module;
}

// A rotor needs some time to get from one speed to another.
void Inspection::inspectFollowing( size_t object ) {
   const auto &rule = board_.objects[object].health.follows;
   const ValueReport *speed = report_[object].find( "speed" );
   if ( !rule || !speed || speed->reading.state != State::Ok )
      return;
   const ValueReport *set = report_[*links_.fan[object]].find( target );
   const auto wanted = set ? numberIn( set->reading.value ) : std::nullopt;
   const auto is = numberIn( speed->reading.value );
   if ( !wanted || !is || set->age < rule->seconds ||
        std::abs( *is - *wanted ) <= *wanted * rule->percent / 100 )
      return;
   Finding finding{ .kind = Finding::Kind::Follows,
                    .key = report_[object].name + " follows",
                    .object = object,
                    .value = "speed",
                    .level = Level::Critical,
                    .words = fmt::format( "runs at {} rpm, {} rpm was set", numberText( *is ),
                                          numberText( *wanted ) ),
                    .number = is,
                    .limit = wanted,
                    .unit = "rpm" };
   finding.needsTime = links_.on[object].has_value();
   if ( const auto explanation = explanationOfLimit( object ) )
      finding.explainedBy = { *explanation };
   add( finding );
}

} // namespace Health
