#include "host/session/ReadingClassifier.h"

#include <algorithm>
#include <boost/algorithm/string/replace.hpp>
#include <fmt/format.h>

namespace Host {

ReadingClassifier::ReadingClassifier( const BoardFiles::Board &board, const Limits &limits )
   : board_( board ), words_( board.traces.faults ), polls_( board.traces ),
     absences_( limits.once ) {}

// Traces of a timer are not part of the running command's output.
void ReadingClassifier::heard( const Trace &trace, std::optional<size_t> added, Time now ) {
   if ( !trace.timerOwner )
      words_.heard( trace );
   const auto object = trace.timerOwner ? trace.timerOwner : added;
   if ( object && *object < board_.objects.size() )
      if ( const auto did = board_.objects[*object].did )
         polls_.heard( *did, trace, now );
}

void ReadingClassifier::explain( Reading &reading ) const {
   if ( reading.state == State::Unreadable && reading.fault.words.empty() )
      reading.fault.words = words_.words();
}

Time ReadingClassifier::classify( Reading &reading, size_t object, Time now ) {
   const BoardFiles::ObjectDescription &description = board_.objects[object];
   if ( reading.state == State::Absent )
      classifyAbsent( reading, object );
   else if ( reading.state == State::Ok )
      absences_.answered( object );
   explain( reading );
   return description.kind == BoardFiles::Kind::Xcvr
             ? polls_.classify( description.did, reading, now )
             : now;
}

void ReadingClassifier::classifyAbsent( Reading &reading, size_t slot ) {
   const Heard heard = heardOf( board_.objects[slot] );
   switch ( heard ) {
   case Heard::Nothing:
      return;
   case Heard::Miss:
      absences_.missed( slot );
      if ( absences_.isAbsent( slot ) ) {
         reading.fault.words =
            fmt::format( "no answer to {} reads in a row", AbsenceCheck::readsInAll );
         return;
      }
      break;
   case Heard::BusFault:
      absences_.failed( slot );
      break;
   case Heard::LaterMiss:
      absences_.missedLater( slot );
      break;
   case Heard::Unmanaged:
   case Heard::Unclear:
      absences_.answered( slot );
      break;
   }
   reading.state = heard == Heard::Unmanaged ? State::Unmanaged : State::Unreadable;
}

ReadingClassifier::Heard
ReadingClassifier::heardOf( const BoardFiles::ObjectDescription &slot ) const {
   const BoardFiles::PluginTraces &traces = board_.traces;
   if ( !words_.hasFault() ) {
      if ( words_.hasTrace( traces.unmanaged ) )
         return Heard::Unmanaged;
      return words_.hasTrace( traces.unreadable ) ? Heard::Unclear : Heard::Nothing;
   }
   const std::string words = words_.words();
   const auto holds = [&]( const std::string &part ) {
      return words.find( boost::algorithm::replace_all_copy(
                part, "{address}", fmt::format( "{:#04x}", slot.address ) ) ) != std::string::npos;
   };
   if ( traces.absentEnds.empty() || !words.ends_with( traces.absentEnds ) ||
        !holds( traces.absentHolds ) )
      return Heard::BusFault;
   const auto &first = traces.absentFirst;
   return first.empty() || std::any_of( first.begin(), first.end(), holds ) ? Heard::Miss
                                                                            : Heard::LaterMiss;
}

} // namespace Host
