#include "host/serve/Why.h"

#include "host/serve/Wiring.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>

namespace Host {
namespace {

using BoardFiles::Board;
using BoardFiles::ChipPlace;
using BoardFiles::ObjectDescription;

bool isOf( const ObjectDescription &object, const ChipPlace &chip ) {
   return std::find( object.chips.begin(), object.chips.end(), chip ) != object.chips.end();
}

// What is wrong with an object itself, in words.
std::string wordsOf( const ObjectReport &object ) {
   const Health::ObjectHealth health = object.health.value_or( Health::ObjectHealth() );
   if ( health.isAbsent )
      return std::string( nameOf( State::Absent ) );
   for ( size_t i = 0; i < health.values.size() && i < object.values.size(); ++i )
      if ( !health.values[i].crossed.empty() )
         return object.values[i].reading.name + " is " + health.values[i].crossed;
   if ( Health::isBad( object.state ) )
      return fmt::format( "{}: {}", nameOf( object.state ), toText( object.fault ) );
   for ( const ValueReport &value : object.values )
      if ( Health::isBad( value.reading.state ) )
         return fmt::format( "{} is {}: {}", value.reading.name, nameOf( value.reading.state ),
                             toText( value.reading.fault ) );
   return std::string( nameOf( object.state ) );
}

WhyStep stepOf( const ObjectReport &object ) {
   return { object.name, object.health ? object.health->level : Health::Level::Indeterminate,
            wordsOf( object ) };
}

// From the object over what it is on to what its cause is about.
std::vector<WhyStep> chainOf( const std::vector<size_t> &on, size_t object,
                              const BoardReport &report, const Health::Cause *cause ) {
   std::vector<WhyStep> chain{ stepOf( report[object] ) };
   if ( !cause || cause->object == report[object].name )
      return chain;
   for ( const size_t one : on ) {
      const ObjectReport &next = report[one];
      if ( next.name == cause->object || ( next.health && next.health->cause == cause->key ) )
         chain.push_back( stepOf( next ) );
      if ( next.name == cause->object )
         return chain;
   }
   for ( const ObjectReport &other : report )
      if ( other.name == cause->object )
         chain.push_back( stepOf( other ) );
   return chain;
}

std::vector<Health::Cause> causesOf( const ObjectReport &object, const HealthReport &health ) {
   const std::string key = object.health ? object.health->cause : std::string();
   std::vector<Health::Cause> causes;
   for ( const Health::Cause &cause : health.causes ) {
      const bool isOfIt = cause.object == object.name ||
                          std::find( cause.explains.begin(), cause.explains.end(), object.name ) !=
                             cause.explains.end();
      if ( cause.key == key )
         causes.insert( causes.begin(), cause );
      else if ( isOfIt )
         causes.push_back( cause );
   }
   return causes;
}

// Whether an object tells that its chip answers.
std::optional<bool> answers( const ObjectDescription &object, const ObjectReport &report ) {
   if ( !object.hasValues() || report.state == State::Unsupported )
      return {};
   return !Health::isBad( report.state ) && report.state != State::Absent &&
          !( report.health && report.health->isAbsent );
}

std::vector<ChipNeighbour> neighboursOf( const Board &board, const std::vector<ChipPlace> &chips,
                                         const BoardReport &report ) {
   std::map<ChipPlace, ChipNeighbour> found;
   for ( size_t i = 0; i < board.objects.size(); ++i )
      for ( const ChipPlace &place : board.objects[i].chips ) {
         if ( std::none_of( chips.begin(), chips.end(), [&]( const ChipPlace &own ) {
                 return own.bus == place.bus && own.path == place.path;
              } ) )
            continue;
         ChipNeighbour &chip = found[place];
         chip.place = place;
         if ( chip.objects.empty() || chip.objects.back() != board.objects[i].name )
            chip.objects.push_back( board.objects[i].name );
         if ( const auto says = answers( board.objects[i], report[i] ) )
            chip.answers = chip.answers.value_or( false ) || *says;
      }
   std::vector<ChipNeighbour> neighbours;
   for ( auto &[place, chip] : found )
      neighbours.push_back( std::move( chip ) );
   return neighbours;
}

} // namespace

Why whyOf( const Board &board, size_t object, const BoardReport &report,
           const HealthReport &health ) {
   const ObjectDescription &description = board.objects[object];
   const auto on = onOf( board, object );
   Why why{ .board = board.folder,
            .object = report[object],
            .chips = description.chips,
            .driver = description.driver,
            .did = description.did };
   for ( const size_t one : on )
      why.on.push_back( board.objects[one].name );
   why.causes = causesOf( report[object], health );
   why.chain = chainOf( on, object, report, why.causes.empty() ? nullptr : &why.causes.front() );
   why.neighbours = neighboursOf( board, description.chips, report );
   return why;
}

std::vector<PassedTransfer> lastOf( const std::vector<ChipPlace> &chips,
                                    const std::vector<PassedTransfer> &all ) {
   std::vector<PassedTransfer> last;
   std::map<ChipPlace, size_t> counts;
   for ( auto transfer = all.rbegin(); transfer != all.rend(); ++transfer )
      if ( std::find( chips.begin(), chips.end(), transfer->place ) != chips.end() &&
           ++counts[transfer->place] <= mostTransfersOfWhy )
         last.push_back( *transfer );
   std::reverse( last.begin(), last.end() );
   std::stable_sort( last.begin(), last.end(),
                     []( const auto &one, const auto &other ) { return one.age > other.age; } );
   return last;
}

std::vector<std::string> bussesOf( const std::vector<ChipPlace> &chips ) {
   std::vector<std::string> busses;
   for ( const ChipPlace &chip : chips )
      if ( std::find( busses.begin(), busses.end(), chip.bus ) == busses.end() )
         busses.push_back( chip.bus );
   return busses;
}

std::vector<ChipReadings> registersOf( const Board &board, size_t object ) {
   std::vector<ChipReadings> all;
   for ( const ChipPlace &place : board.objects[object].chips ) {
      ChipReadings &chip = all.emplace_back();
      chip.place = place;
      // Another object may be the one that names the chip by its driver: a slot has its own.
      for ( const ObjectDescription &other : board.objects ) {
         if ( !isOf( other, place ) )
            continue;
         if ( other.kind == BoardFiles::Kind::Smbus && chip.through.empty() )
            chip.through = other.name;
         const auto known = board.registers.find( other.driver );
         if ( known == board.registers.end() || !chip.registers.empty() )
            continue;
         for ( const BoardFiles::ChipRegister &one : known->second )
            if ( one.isFree )
               chip.registers.push_back( { .what = one } );
      }
      if ( chip.registers.empty() )
         chip.whyNone = "registers.json of the board names none of this chip that may be read";
      else if ( chip.through.empty() )
         chip.whyNone = "no SMBus object of the board reaches this chip";
      if ( !chip.whyNone.empty() )
         chip.registers.clear();
   }
   return all;
}

} // namespace Host
