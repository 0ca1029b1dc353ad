#include "host/session/ReadingClassifier.h"

#include <boost/algorithm/string/replace.hpp>
#include <fmt/format.h>

namespace Host {

ReadingClassifier::ReadingClassifier( const BoardFiles::Board &board )
   : board_( board ), words_( board.traces.faults ), polls_( board.traces ) {}

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

Time ReadingClassifier::classify( Reading &reading, size_t object, Time now ) const {
   const BoardFiles::ObjectDescription &description = board_.objects[object];
   if ( reading.state == State::Absent )
      reading.state = stateOfAbsent( description );
   explain( reading );
   return description.kind == BoardFiles::Kind::Xcvr
             ? polls_.classify( description.did, reading, now )
             : now;
}

// A slot is empty when the bus was good, or when no chip acknowledged the module's own address. For
// any other fault of the bus it is not known. A trace says when a module is there, but its model is
// unknown.
State ReadingClassifier::stateOfAbsent( const BoardFiles::ObjectDescription &slot ) const {
   const BoardFiles::PluginTraces &traces = board_.traces;
   if ( words_.hasFault() ) {
      const std::string words = words_.words();
      const std::string holds = boost::algorithm::replace_all_copy(
         traces.absentHolds, "{address}", fmt::format( "{:#04x}", slot.address ) );
      const bool noAcknowledge = !traces.absentEnds.empty() &&
                                 words.ends_with( traces.absentEnds ) &&
                                 words.find( holds ) != std::string::npos;
      return noAcknowledge ? State::Absent : State::Unreadable;
   }
   if ( words_.hasTrace( traces.unmanaged ) )
      return State::Unmanaged;
   return words_.hasTrace( traces.unreadable ) ? State::Unreadable : State::Absent;
}

} // namespace Host
