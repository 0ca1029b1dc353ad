#include "view/Commands.h"
#include "view/Stay.h"

#include <map>
#include <spdlog/spdlog.h>

namespace Host {
namespace {

// Logs what is known of a board, where it isn't what was logged last.
class Diary {
 public:
   void take( const BoardReport &board ) {
      for ( const ObjectReport &object : board ) {
         take( object.name, object.state, object.fault );
         for ( const ValueReport &value : object.values )
            take( object.name + " " + value.reading.name, value.reading.state,
                  value.reading.fault );
      }
   }

 private:
   void take( const std::string &what, State state, const Fault &fault ) {
      const bool bad = state == State::Unreadable;
      std::string entry( nameOf( state ) );
      if ( bad )
         entry += ": " + toText( fault );
      std::string &last = entries_[what];
      if ( last == entry )
         return;
      last = entry;
      spdlog::log( bad ? spdlog::level::warn : spdlog::level::info, "{}: {}", what, entry );
   }

   std::map<std::string, std::string> entries_{};
};

} // namespace

int serve( const Board &board, const Options &options ) {
   Stay stay( board, options );
   Diary diary;
   spdlog::info( "serves {} with {} objects", board.folder, board.objects.size() );
   stay.tellWith( [&] { diary.take( stay.report() ); }, false );
   return stay.run();
}

} // namespace Host
