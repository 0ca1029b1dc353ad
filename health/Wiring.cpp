#include "health/Wiring.h"

#include <fmt/format.h>

#include <algorithm>

namespace Health {

namespace {

// How a chip fails, behind its name.
std::string_view wordsOf( BusFault fault ) {
   switch ( fault ) {
   case BusFault::NoAcknowledge:
      return "doesn't acknowledge";
   case BusFault::Pec:
      return "answers with a wrong packet error code";
   case BusFault::Timeout:
      return "doesn't answer in time";
   case BusFault::HeldLow:
      return "fails, because a line of the bus is held low";
   default:
      return "can't be reached";
   }
}

std::string selectionsIn( const std::string &path ) {
   return path.empty() ? "" : " behind " + path;
}

} // namespace

void Wiring::look( std::span<const Reach> objects, const Evidence *evidence ) {
   evidence_ = evidence;
   chips_.clear();
   for ( size_t i = 0; i < objects.size(); ++i ) {
      if ( objects[i] != Reach::Good && objects[i] != Reach::Failed )
         continue;
      for ( const Place &place : board_.objects[i].chips ) {
         Chip &chip = chips_[place];
         chip.isSilent = chip.isSilent && objects[i] == Reach::Failed;
         chip.objects.push_back( i );
      }
   }
}

std::optional<Finding> Wiring::explain( size_t object ) const {
   for ( const Place &chip : board_.objects[object].chips ) {
      if ( auto bus = busOf( chip ) )
         return bus;
      if ( !evidence_ ) {
         const auto known = chips_.find( chip );
         if ( known != chips_.end() && known->second.isSilent )
            return guess( chip );
         continue;
      }
      if ( auto mux = muxBefore( chip ) )
         return mux;
      const ChipEvidence *evidence = evidenceOf( chip );
      if ( evidence && evidence->failuresInARow > 0 )
         return silent( chip, std::string( wordsOf( evidence->last ) ) );
   }
   return {};
}

const BusEvidence *Wiring::evidenceOf( const std::string &bus ) const {
   if ( !evidence_ )
      return nullptr;
   const auto found = std::find_if( evidence_->begin(), evidence_->end(),
                                    [&]( const BusEvidence &one ) { return one.bus == bus; } );
   return found == evidence_->end() ? nullptr : &*found;
}

const ChipEvidence *Wiring::evidenceOf( const Place &place ) const {
   const BusEvidence *bus = evidenceOf( place.bus );
   if ( !bus )
      return nullptr;
   const auto found =
      std::find_if( bus->chips.begin(), bus->chips.end(), [&]( const ChipEvidence &chip ) {
         return chip.path == place.path && chip.address == place.address;
      } );
   return found == bus->chips.end() ? nullptr : &*found;
}

// Whether nothing can be read of all chips that are behind these selections.
bool Wiring::areSilent( const std::string &bus, const std::string &path, size_t atLeast ) const {
   size_t silent = 0;
   for ( const auto &[place, chip] : chips_ ) {
      if ( place.bus != bus || !place.path.starts_with( path ) )
         continue;
      if ( !chip.isSilent )
         return false;
      ++silent;
   }
   return silent >= atLeast;
}

std::optional<Finding> Wiring::busOf( const Place &chip ) const {
   const BusEvidence *bus = evidenceOf( chip.bus );
   if ( !bus )
      return {};
   Finding finding{ .kind = Finding::Kind::Bus, .level = Level::Critical, .needsTime = true };
   const ChipEvidence *own = evidenceOf( chip );
   const bool isAll = areSilent( chip.bus, "", 2 );
   const auto whole = std::find_if( bus->quarantined.begin(), bus->quarantined.end(),
                                    []( const auto &one ) { return one.isWholeBus; } );
   const bool isLeftAlone = whole != bus->quarantined.end();
   if ( isLeftAlone || ( bus->isHeld && ( isAll || ( own && own->last == BusFault::HeldLow ) ) ) ) {
      const std::string &path = isLeftAlone ? whole->path : bus->heldPath;
      finding.key = fmt::format( "bus {} held{}", chip.bus, selectionsIn( path ) );
      finding.words =
         path.empty()
            ? fmt::format( "{} is held: nothing on it can be read", chip.bus )
            : fmt::format( "the segment {} of {} is held, and its multiplexer can't be released: "
                           "nothing on the whole bus can be read",
                           path, chip.bus );
      return finding;
   }
   if ( auto segment = segmentOf( chip ) )
      return segment;
   // A multiplexer that is the only chip of the root bus explains the same better.
   if ( !isAll || muxBefore( chip ) )
      return {};
   finding.key = fmt::format( "bus {} silent", chip.bus );
   finding.words = fmt::format( "no chip on {} {}", chip.bus,
                                own && own->last == BusFault::NoAcknowledge ? "acknowledges"
                                                                            : "can be reached" );
   return finding;
}

// The segment that the server leaves alone, while the rest of the bus is used.
std::optional<Finding> Wiring::segmentOf( const Place &chip ) const {
   const auto leadsTo = [&chip]( const std::string &path ) {
      return chip.path == path || chip.path.starts_with( path + " " );
   };
   for ( const QuarantinedSegment &segment : evidenceOf( chip.bus )->quarantined )
      if ( !segment.isWholeBus && leadsTo( segment.path ) )
         return Finding{ .kind = Finding::Kind::Bus,
                         .key = fmt::format( "bus {} segment {}", chip.bus, segment.path ),
                         .level = Level::Critical,
                         .words = fmt::format( "the segment {} of {} is held or doesn't answer in "
                                               "time: nothing on it can be read",
                                               segment.path, chip.bus ),
                         .needsTime = true };
   return {};
}

std::optional<Finding> Wiring::muxBefore( const Place &chip ) const {
   for ( const Place &mux : muxesBefore( chip ) ) {
      const ChipEvidence *evidence = evidenceOf( mux );
      if ( evidence && evidence->failuresInARow > 0 )
         return Finding{ .kind = Finding::Kind::Multiplexer,
                         .key = fmt::format( "multiplexer {} silent", toText( mux ) ),
                         .level = Level::Critical,
                         .words =
                            fmt::format( "the multiplexer {} {}: nothing behind it can be read",
                                         toText( mux ), wordsOf( evidence->last ) ),
                         .needsTime = true };
   }
   return {};
}

Finding Wiring::silent( const Place &place, const std::string &how ) const {
   Finding finding{ .kind = Finding::Kind::Chip,
                    .words = fmt::format( "its chip {} {}", toText( place ), how ),
                    .needsTime = true };
   const auto chip = chips_.find( place );
   if ( chip != chips_.end() && chip->second.objects.size() == 1 ) {
      finding.object = chip->second.objects.front();
      finding.key = board_.objects[finding.object].name + " silent";
   } else {
      finding.key = fmt::format( "chip {} silent", toText( place ) );
      finding.words = fmt::format( "the chip {} {}", toText( place ), how );
   }
   return finding;
}

// From the chip up, as long as nothing answers that is behind it.
Finding Wiring::guess( const Place &chip ) const {
   std::string may = fmt::format( "the chip {}", toText( chip ) );
   std::string key = fmt::format( "chip {}", toText( chip ) );
   Finding finding{ .kind = Finding::Kind::Chip, .needsTime = true };
   auto muxes = muxesBefore( chip );
   std::reverse( muxes.begin(), muxes.end() );
   for ( const Place &mux : muxes ) {
      const std::string behind =
         fmt::format( "{}{}{:#04x}=", mux.path, mux.path.empty() ? "" : " ", mux.address );
      if ( !areSilent( chip.bus, behind, 1 ) )
         break;
      may += fmt::format( ", or the multiplexer {}", toText( mux ) );
      key = fmt::format( "multiplexer {}", toText( mux ) );
      finding.kind = Finding::Kind::Multiplexer;
   }
   if ( areSilent( chip.bus, "", 2 ) ) {
      may = fmt::format( "the bus {}, or one of its chips", chip.bus );
      key = "bus " + chip.bus;
      finding.kind = Finding::Kind::Bus;
   } else if ( areSilent( chip.bus, "", 1 ) ) { // it is the only one there
      may += fmt::format( ", or the bus {}", chip.bus );
   }
   const auto known = chips_.find( chip );
   if ( finding.kind == Finding::Kind::Chip && known != chips_.end() &&
        known->second.objects.size() == 1 )
      finding.object = known->second.objects.front();
   finding.key = key + " perhaps";
   finding.words = fmt::format( "can't be read: {} (the server doesn't tell which)", may );
   return finding;
}

} // namespace Health
