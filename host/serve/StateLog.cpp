#include "host/serve/StateLog.h"

#include "smbus/BusLoads.h"

#include "host/session/ObjectRecord.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace Host {
namespace {

constexpr size_t namesInALine = 4;

std::string okEntry() { return std::string( nameOf( State::Ok ) ); }

bool isFault( const std::string &entry ) {
   return entry.starts_with( nameOf( State::Unreadable ) );
}

std::string entryOf( State state, const Fault &fault ) {
   if ( state != State::Unreadable )
      return std::string( nameOf( state ) );
   // For how long something is quarantined is new each time, and not a change.
   std::string words = toText( fault );
   if ( const size_t at = words.find( Bus::isQuarantined ); at != words.npos )
      words.resize( at + Bus::isQuarantined.size() );
   return fmt::format( "{}: {}", nameOf( state ), words );
}

// The entry that all values of an object share; empty where they differ. What the driver doesn't
// have says nothing of the object, unless there is nothing else.
std::string commonEntry( const ObjectReport &object ) {
   std::string common;
   for ( const ValueReport &value : object.values ) {
      const Reading &reading = value.reading;
      if ( reading.state == State::Unsupported )
         continue;
      const std::string entry = entryOf( reading.state, reading.fault );
      if ( !common.empty() && entry != common )
         return {};
      common = entry;
   }
   return common.empty() && !object.values.empty() ? std::string( nameOf( State::Unsupported ) )
                                                   : common;
}

// What is to be said of an object, in the order in which it is said.
std::vector<std::pair<std::string, std::string>> entriesOf( const ObjectReport &object ) {
   if ( object.state != State::Ok || object.values.empty() )
      return { { object.name, entryOf( object.state, object.fault ) } };
   if ( const std::string common = commonEntry( object ); !common.empty() )
      return { { object.name, common } };
   std::vector<std::pair<std::string, std::string>> entries{ { object.name, okEntry() } };
   for ( const ValueReport &value : object.values ) {
      const Reading &reading = value.reading;
      if ( reading.state != State::Ok && reading.state != State::Unsupported )
         entries.emplace_back( object.name + " " + reading.name,
                               entryOf( reading.state, reading.fault ) );
   }
   return entries;
}

std::string listOf( const std::vector<std::string> &names ) {
   if ( names.size() <= namesInALine )
      return fmt::format( "{}", fmt::join( names, ", " ) );
   return fmt::format( "{} and {} more",
                       fmt::join( names.begin(), names.begin() + namesInALine - 1, ", " ),
                       names.size() - namesInALine + 1 );
}

// The parts that came to the same entry, in the order of their first ones.
class Groups {
 public:
   void add( const std::string &part, const std::string &entry ) {
      const auto known = std::find_if( groups_.begin(), groups_.end(),
                                       [&]( const Group &group ) { return group.entry == entry; } );
      if ( known == groups_.end() )
         groups_.push_back( { entry, { part } } );
      else
         known->parts.push_back( part );
   }
   std::vector<StateLog::Line> lines() const {
      std::vector<StateLog::Line> lines;
      for ( const Group &group : groups_ )
         lines.push_back( { isFault( group.entry ),
                            fmt::format( "{}: {}", listOf( group.parts ), group.entry ) } );
      return lines;
   }

 private:
   struct Group {
      std::string entry;
      std::vector<std::string> parts;
   };
   std::vector<Group> groups_{};
};

} // namespace

std::vector<StateLog::Line> StateLog::changes( const BoardReport &board, bool wasRead ) {
   std::map<std::string, std::string> now;
   Groups changed;
   for ( const ObjectReport &object : board ) {
      bool isSaid = false; // the object's own entry says what there is to say
      for ( const auto &[part, entry] : entriesOf( object ) ) {
         const bool isTold = isFault( entry ) && object.fault.words != notBroughtUp;
         if ( !wasRead && !isTold )
            continue;
         now[part] = entry;
         const auto last = entries_.find( part );
         if ( last != entries_.end() && last->second == entry )
            continue;
         isSaid |= part == object.name;
         changed.add( part, entry );
      }
      if ( isSaid )
         continue;
      for ( const ValueReport &value : object.values ) {
         const std::string part = object.name + " " + value.reading.name;
         if ( entries_.contains( part ) && !now.contains( part ) )
            changed.add( part, okEntry() );
      }
   }
   entries_ = std::move( now );
   return changed.lines();
}

} // namespace Host
