#include "health/ModuleChanges.h"

#include <fmt/format.h>

namespace Health {

namespace {

std::string textOf( const ObjectReport &module, const char *value ) {
   const ValueReport *read = module.find( value );
   const auto *text = read ? std::get_if<std::string>( &read->reading.value ) : nullptr;
   return text ? *text : std::string();
}

// Empty while it isn't known.
std::string identityOf( const ObjectReport &module ) {
   const std::string vendor = textOf( module, "vendor" ), part = textOf( module, "part_number" ),
                     serial = textOf( module, "serial" );
   if ( vendor.empty() && part.empty() && serial.empty() )
      return "";
   return fmt::format( "{} {}, serial {}", vendor, part, serial );
}

constexpr auto unknown = "a module that can't be read";

} // namespace

std::vector<size_t> ModuleChanges::add( const BoardReport &report, const Instant &now,
                                        std::vector<Event> &events ) {
   std::vector<size_t> gone;
   for ( size_t i = 0; i < report.size(); ++i ) {
      if ( board_.objects[i].kind != BoardFiles::Kind::Module || !links_.on[i] )
         continue;
      const ObjectReport &inCage = report[*links_.on[i]];
      const ValueReport *presence = inCage.find( Inspection::presence );
      if ( !presence || isBad( presence->reading.state ) )
         continue;
      Cage &cage = cages_[i];
      const bool isThere = presence->reading.state != State::Absent;
      std::string identity = isThere ? identityOf( report[i] ) : "";
      if ( isThere && identity.empty() ) {
         if ( report[i].state != State::Unreadable )
            continue; // it is read soon
         identity = cage.isThere == true ? cage.identity : unknown;
      }
      const auto note = [&]( std::string words ) {
         events.push_back( { .time = now.wall,
                             .what = Event::What::Note,
                             .cause = inCage.name + " module",
                             .object = inCage.name,
                             .level = Level::Ok,
                             .words = std::move( words ) } );
      };
      // One may be swapped so fast that nobody sees the empty cage.
      const bool isAnother = isThere && cage.identity != identity && cage.identity != unknown;
      if ( cage.isThere == true && ( !isThere || isAnother ) ) {
         note( "taken out: " + cage.identity );
         gone.push_back( i );
      }
      if ( cage.isThere && isThere && ( !*cage.isThere || isAnother ) )
         note( "plugged: " + identity );
      cage = { isThere, identity };
   }
   return gone;
}

} // namespace Health
