#include "health/Monitor.h"

#include "health/Texts.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

namespace Health {

namespace {

int badness( Level level ) {
   switch ( level ) {
   case Level::Critical:
      return 3;
   case Level::Warning:
      return 2;
   case Level::Indeterminate:
      return 1;
   default:
      return 0;
   }
}

Level worse( Level one, Level other ) { return badness( other ) > badness( one ) ? other : one; }

// Without the number of a lane: one cause has all lanes.
std::string quantityOf( const std::string &value ) {
   const size_t end = value.find_last_not_of( "0123456789" );
   const bool isLane = end != std::string::npos && end + 1 < value.size() && value[end] == '_';
   return isLane ? value.substr( 0, end ) : value;
}

bool isTold( const Finding &finding ) {
   return finding.explainedBy.empty() && finding.level != Level::Indeterminate;
}

} // namespace

Monitor::Monitor( const BoardFiles::Board &board, double settle )
   : board_( board ), links_( board ), settle_( settle ), watches_( board.objects.size() ),
     changes_( board, links_ ) {}

std::vector<Event> Monitor::update( const BoardReport &report, const Surroundings &surroundings,
                                    const Instant &now ) {
   if ( !first_ )
      first_ = now;
   isNew_ = secondsBetween( *first_, now ) < settle_;
   const Inspection inspection( board_, links_, report, surroundings, known_, watches_, now );
   const Findings &findings = inspection.findings();
   link( inspection );
   rules_ = inspection.rules();
   std::erase_if( pending_, [&]( const auto &pending ) {
      return std::none_of( findings.begin(), findings.end(), [&]( const Finding &one ) {
         return one.key == pending.first && isTold( one );
      } );
   } );
   events_.clear();
   clear( inspection, now );
   for ( size_t i = 0; i < findings.size(); ++i )
      if ( isTold( findings[i] ) )
         tell( inspection, i, now );
   // The next module has a history and thresholds of its own.
   for ( const size_t module : changes_.add( report, now, events_ ) ) {
      watches_[module].clear();
      known_.erase( module );
   }
   return std::move( events_ );
}

// Finds the roots of each finding, and what is wrong with each object.
void Monitor::link( const Inspection &inspection ) {
   const Findings &findings = inspection.findings();
   roots_.assign( findings.size(), {} );
   causeOf_.assign( board_.objects.size(), "" );
   levels_.assign( board_.objects.size(), Level::Ok );
   reaches_.clear();
   for ( size_t i = 0; i < board_.objects.size(); ++i ) {
      reaches_.push_back( inspection.reach( i ) );
      if ( reaches_[i] == Reach::Failed || reaches_[i] == Reach::Absent )
         levels_[i] = Level::Indeterminate;
   }
   // What explains another finding stands before it.
   for ( size_t i = 0; i < findings.size(); ++i ) {
      std::set<size_t> roots;
      for ( const size_t other : findings[i].explainedBy )
         roots.insert( roots_[other].begin(), roots_[other].end() );
      if ( findings[i].explainedBy.empty() )
         roots.insert( i );
      roots_[i].assign( roots.begin(), roots.end() );
      const size_t object = findings[i].object;
      if ( object == noObject )
         continue;
      if ( causeOf_[object].empty() )
         causeOf_[object] = findings[roots_[i].front()].key;
      if ( levels_[object] != Level::Indeterminate )
         levels_[object] = worse( levels_[object], findings[i].level );
   }
}

void Monitor::tell( const Inspection &inspection, size_t root, const Instant &now ) {
   const Findings &findings = inspection.findings();
   const Finding &finding = findings[root];
   Level level = finding.level;
   std::set<size_t> members; // in the order of the board
   std::vector<std::string> rules;
   for ( size_t i = 0; i < findings.size(); ++i ) {
      const Finding &one = findings[i];
      if ( std::find( roots_[i].begin(), roots_[i].end(), root ) == roots_[i].end() )
         continue;
      if ( one.object != noObject )
         members.insert( one.object );
      else if ( i != root && one.kind == Finding::Kind::Rule ) {
         level = worse( level, one.level );
         rules.push_back( one.key );
      }
   }
   std::vector<std::string> explains;
   for ( const size_t member : members )
      if ( member != finding.object )
         explains.push_back( board_.objects[member].name );
   explains.insert( explains.end(), rules.begin(), rules.end() );
   const auto known = open_.find( finding.key );
   if ( known == open_.end() && finding.needsTime ) {
      const auto found = pending_.emplace( finding.key, now ).first;
      if ( secondsBetween( found->second, now ) < settle_ )
         return;
   }
   const auto pending = pending_.find( finding.key );
   const Instant begun = pending == pending_.end() ? now : pending->second;
   const bool isNews = known == open_.end() || known->second.cause.level != level;
   Open &open = open_[finding.key];
   if ( known == open_.end() ) {
      open.begun = begun;
      open.cause.since = begun.wall;
   }
   // Who has seen less than this has not seen this.
   if ( badness( level ) > badness( open.cause.level ) )
      open.cause.isAcknowledged = false;
   open.kind = finding.kind;
   open.object = finding.object;
   open.members.assign( members.begin(), members.end() );
   open.cause.key = finding.key;
   open.cause.object = finding.object == noObject ? "" : board_.objects[finding.object].name;
   open.cause.value = finding.value;
   open.cause.level = level;
   open.cause.words = finding.words;
   open.cause.explains = std::move( explains );
   open.cause.isHidden = false;
   if ( isNews )
      events_.push_back( { .time = now.wall,
                           .cause = finding.key,
                           .object = open.cause.object,
                           .value = finding.value,
                           .level = level,
                           .words = finding.words,
                           .number = finding.number,
                           .limit = finding.limit,
                           .unit = finding.unit,
                           .explains = open.cause.explains } );
}

// Whether it can be seen that nothing is wrong any more.
bool Monitor::isOver( const Open &open, const Inspection &inspection ) {
   switch ( open.kind ) {
   case Finding::Kind::PlugIn:
   case Finding::Kind::Server:
   case Finding::Kind::Rule:
      return true; // always known
   case Finding::Kind::Bus:
   case Finding::Kind::Multiplexer:
   case Finding::Kind::Chip:
      return std::any_of(
                open.members.begin(), open.members.end(),
                [&]( size_t member ) { return inspection.reach( member ) == Reach::Good; } ) ||
             std::all_of( open.members.begin(), open.members.end(),
                          [&]( size_t member ) { return inspection.isGone( member ); } );
   case Finding::Kind::Supply:
      return inspection.isKnownOfSupply( open.object ) || inspection.isGone( open.object );
   default:
      return inspection.isKnown( open.object, open.cause.value ) ||
             inspection.isGone( open.object );
   }
}

void Monitor::clear( const Inspection &inspection, const Instant &now ) {
   const Findings &findings = inspection.findings();
   for ( auto at = open_.begin(); at != open_.end(); ) {
      Open &open = at->second;
      const bool isFound =
         std::any_of( findings.begin(), findings.end(),
                      [&]( const Finding &one ) { return one.key == open.cause.key; } );
      if ( isFound || !isOver( open, inspection ) ) {
         open.cause.isHidden = true; // tell() knows better
         ++at;
         continue;
      }
      events_.push_back( { .time = now.wall,
                           .what = Event::What::Clear,
                           .cause = open.cause.key,
                           .object = open.cause.object,
                           .value = open.cause.value,
                           .level = Level::Ok,
                           .words = ( open.object != noObject && inspection.isGone( open.object )
                                         ? "its module was taken out after "
                                         : "good again after " ) +
                                    durationText( secondsBetween( open.begun, now ) ),
                           .explains = open.cause.explains } );
      at = open_.erase( at );
   }
}

void Monitor::resume( const std::vector<Event> &events, const Instant &now ) {
   const auto numberOf = [this]( const std::string &name ) {
      for ( size_t i = 0; i < board_.objects.size(); ++i )
         if ( board_.objects[i].name == name )
            return i;
      return noObject;
   };
   for ( const Event &event : events ) {
      if ( event.what == Event::What::Note )
         continue;
      if ( event.what == Event::What::Clear ) {
         open_.erase( event.cause );
         continue;
      }
      if ( event.what == Event::What::Acknowledged ) {
         if ( const auto known = open_.find( event.cause ); known != open_.end() )
            known->second.cause.isAcknowledged = true;
         continue;
      }
      const bool isNew = !open_.contains( event.cause );
      Open &open = open_[event.cause];
      open.object = numberOf( event.object );
      open.kind = open.object != noObject ? Finding::Kind::Limit : Finding::Kind::Bus;
      if ( event.value == Inspection::registers )
         open.kind = Finding::Kind::Supply;
      open.members.clear();
      for ( const std::string &name : event.explains )
         if ( const size_t member = numberOf( name ); member != noObject )
            open.members.push_back( member );
      if ( badness( event.level ) > badness( open.cause.level ) )
         open.cause.isAcknowledged = false;
      if ( isNew ) {
         open.begun = { now.steady - ( now.wall - event.time ), event.time };
         open.cause.since = event.time;
      }
      open.cause.key = event.cause;
      open.cause.object = event.object;
      open.cause.value = event.value;
      open.cause.level = event.level;
      open.cause.words = event.words;
      open.cause.isHidden = true;
      open.cause.explains = event.explains;
   }
}

bool Monitor::acknowledge( const std::string &key, const Instant &now ) {
   const auto open = open_.find( key );
   if ( open == open_.end() )
      return false;
   open->second.cause.isAcknowledged = true;
   if ( open->second.kind == Finding::Kind::Limit )
      for ( WatchedValue &value : watches_[open->second.object] )
         if ( quantityOf( value.name ) == quantityOf( open->second.cause.value ) )
            value.watch.acknowledge( now );
   return true;
}

void Monitor::knows( size_t object, const std::string &value,
                     const BoardFiles::ValueLimits &limits ) {
   const bool isModule = board_.objects[object].kind == BoardFiles::Kind::Module;
   const size_t of = isModule ? object : links_.on[object].value_or( object );
   const auto [known, isNew] = known_[of].try_emplace( value, limits );
   if ( !isNew && known->second == limits )
      return; // as nearly always
   known->second = limits;
   for ( WatchedValue &watched : watches_[of] )
      if ( watched.name == value )
         watched.watch.knows( limits );
}

std::vector<Cause> Monitor::causes() const {
   std::vector<Cause> causes;
   for ( const auto &[key, open] : open_ )
      causes.push_back( open.cause );
   std::stable_sort( causes.begin(), causes.end(), []( const Cause &one, const Cause &other ) {
      if ( one.level != other.level )
         return badness( one.level ) > badness( other.level );
      return one.since < other.since;
   } );
   return causes;
}

Level Monitor::level() const {
   const bool isUnclear = !first_ || ( isNew_ && !pending_.empty() );
   Level level = isUnclear ? Level::Indeterminate : Level::Ok;
   for ( const auto &[key, open] : open_ )
      level = worse( level, open.cause.level );
   return level;
}

void Monitor::describe( BoardReport &report ) const {
   for ( size_t i = 0; i < report.size() && i < levels_.size(); ++i ) {
      ObjectHealth health{ .level = levels_[i],
                           .cause = causeOf_[i],
                           .isAbsent = reaches_[i] == Reach::Absent };
      for ( size_t j = 0; j < report[i].values.size() && j < watches_[i].size(); ++j )
         health.values.push_back( watches_[i][j].watch.health( report[i].values[j].reading.unit ) );
      report[i].health = std::move( health );
   }
}

void Monitor::addLast( size_t object, ObjectReport &report ) const {
   if ( !report.health || object >= watches_.size() )
      return;
   std::vector<ValueHealth> &values = report.health->values;
   for ( size_t i = 0; i < values.size() && i < watches_[object].size(); ++i )
      values[i].last = watches_[object][i].watch.last();
}

} // namespace Health
