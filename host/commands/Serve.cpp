#include "host/commands/CommandSession.h"
#include "host/commands/Commands.h"
#include "host/serve/HttpServer.h"
#include "host/serve/Place.h"

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

int serve( const BoardFiles::Board &board, const Options &options ) {
   Stay stay( board, options, Stay::Source::Own );
   const Api api( board, serveName( board.folder ),
                  { .report = [&stay] { return stay.report(); },
                    .ask =
                       [&stay]( size_t object, const Action &action,
                                std::function<void( const Reading & )> answer ) {
                          stay.session().ask( object, action, std::move( answer ) );
                       } } );
   const HttpServer server( stay.loop(), serveSocket(), api );
   Diary diary;
   spdlog::info( "serves {} with {} objects at {}", board.folder, board.objects.size(),
                 serveSocket().string() );
   stay.tellWith( [&] { diary.take( stay.report() ); }, false );
   return stay.run();
}

} // namespace Host
