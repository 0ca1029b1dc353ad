#include "host/terminal/BoardSections.h"

#include "boardfiles/Kind.h"
#include "host/Times.h"
#include "host/terminal/CageCells.h"
#include "host/terminal/CageGrid.h"
#include "host/terminal/HealthText.h"
#include "host/terminal/ModuleText.h"
#include "host/terminal/ObjectRows.h"
#include "host/terminal/ObjectText.h"
#include "host/terminal/Standing.h"
#include "screen/Width.h"
#include "screen/Wrap.h"

#include <algorithm>
#include <fmt/ranges.h>

namespace Host {
namespace {

using BoardFiles::Kind;
using Screen::Section;

constexpr std::string_view idOfCauses = "cause ", idOfBusses = "bus ";
constexpr double busyShare = 0.8; // values come late then

std::vector<const ObjectReport *> objectsOf( const Snapshot &snapshot, Kind kind ) {
   std::vector<const ObjectReport *> objects;
   for ( const ObjectReport &object : snapshot.objects )
      if ( object.type == nameOf( kind ) )
         objects.push_back( &object );
   return objects;
}

// All that has no section of its own; of modules only what is not good.
std::vector<const ObjectReport *> others( const Snapshot &snapshot ) {
   std::vector<const ObjectReport *> objects;
   for ( const ObjectReport &object : snapshot.objects ) {
      const auto kind = BoardFiles::kindOf( object.type );
      const bool isShown = kind == Kind::Psu || kind == Kind::Fan || kind == Kind::TempSensor ||
                           kind == Kind::Xcvr || kind == Kind::Led;
      if ( !isShown && ( kind != Kind::Module || standingOf( object ) > Standing::Absent ) )
         objects.push_back( &object );
   }
   return objects;
}

Screen::Item itemOf( const Health::Cause &cause, size_t columns ) {
   constexpr size_t indent = 14;
   const Sign &sign = signOf( standingOf( cause.level ) );
   std::vector<std::string> lines;
   Screen::wrap( lines,
                 fmt::format( "{} {:<10} {}: {}", sign.mark, sign.word, cause.key, cause.words ),
                 indent, columns );
   Screen::Item item{ std::string( idOfCauses ) + cause.key,
                      Screen::linesOf( lines,
                                       cause.isAcknowledged ? Screen::Style::Plain : sign.style ) };
   lines.clear();
   Screen::wrap(
      lines,
      fmt::format( "{:{}}since {}{}{}{}", "", indent, localTimeText( cause.since ),
                   cause.isAcknowledged ? ", acknowledged" : "",
                   cause.isHidden ? ", hidden by another cause now" : "",
                   cause.explains.empty()
                      ? ""
                      : fmt::format( "; explains {}", fmt::join( cause.explains, ", " ) ) ),
      indent, columns );
   for ( const std::string &line : lines )
      item.lines.push_back( { { line } } );
   return item;
}

Section causesOf( const Snapshot &snapshot, size_t columns ) {
   Section section{ .title = "CAUSES" };
   const size_t count = snapshot.health.causes.size();
   const bool isUnknown = count == 0 && snapshot.health.level != Health::Level::Ok;
   section.summary = { { isUnknown    ? "still looking for the cause"
                         : count == 0 ? "none"
                                      : fmt::format( "{}", count ),
                         isUnknown ? Screen::Style::Unknown : Screen::Style::Plain } };
   std::vector<std::string> lines;
   Screen::wrap( lines, "   " + fineOf( snapshot.health ), 3, columns );
   section.legend = Screen::linesOf( lines, Screen::Style::Faint );
   for ( const Health::Cause &cause : snapshot.health.causes )
      section.items.push_back( itemOf( cause, columns ) );
   return section;
}

// What is told of the bus itself, or of a part of it.
const Health::Cause *causeOf( const HealthReport &health, const BusUse &bus ) {
   for ( const Health::Cause &cause : health.causes )
      if ( cause.key.starts_with( fmt::format( "bus {} ", bus.bus ) ) )
         return &cause;
   return nullptr;
}

Section bussesOf( const Snapshot &snapshot, size_t columns ) {
   Section section{ .title = "BUSES" };
   StandingCount count;
   if ( !snapshot.whyNoBusses.empty() ) {
      std::vector<std::string> lines;
      Screen::wrap( lines, "   not known: " + snapshot.whyNoBusses, 3, columns );
      section.legend = Screen::linesOf( lines, Screen::Style::Unknown );
   }
   size_t width = 0;
   for ( const BusUse &bus : snapshot.busses )
      width = std::max( width, Screen::widthOf( bus.bus ) );
   for ( const BusUse &bus : snapshot.busses ) {
      const Health::Cause *const cause = causeOf( snapshot.health, bus );
      const Standing standing = cause ? standingOf( cause->level )
                                : bus.failures > 0 || bus.share > busyShare ? Standing::Warning
                                                                            : Standing::Ok;
      count.add( standing );
      const Sign &sign = signOf( standing );
      const std::string failed = cause ? "because of " + cause->key
                                 : bus.failures == 0
                                    ? "none failed"
                                    : fmt::format( "{} failed: {}", bus.failures, bus.errors );
      std::vector<std::string> lines;
      Screen::wrap( lines,
                    fmt::format( "{} {}  {:5.1f} % busy  {:7.1f} transfers/s  {}", sign.mark,
                                 Screen::fill( bus.bus, width ), 100 * bus.share,
                                 bus.transfersPerSecond, failed ),
                    6, columns );
      section.items.push_back(
         { std::string( idOfBusses ) + bus.bus, Screen::linesOf( lines, sign.style ) } );
   }
   section.summary = count.line();
   return section;
}

std::vector<std::string> detailOfObject( const Snapshot &snapshot, const ObjectReport &object,
                                         size_t columns ) {
   TextSections text( columns );
   const std::string fault = toText( object.fault );
   text.bare( fmt::format( "{}: {}, {}{}{}, {:.1f} s old", object.name, object.type,
                           signOf( standingOf( object ) ).word,
                           object.health && object.health->isAbsent ? ", absent" : "",
                           fault.empty() ? "" : ": " + fault, object.age + snapshot.older ) );
   const std::string own = object.health ? object.health->cause : "";
   std::vector<Health::Cause> causes;
   std::copy_if( snapshot.health.causes.begin(), snapshot.health.causes.end(),
                 std::back_inserter( causes ), [&]( const Health::Cause &cause ) {
                    return cause.key == own || cause.object == object.name ||
                           std::find( cause.explains.begin(), cause.explains.end(), object.name ) !=
                              cause.explains.end();
                 } );
   text.section( "why" );
   addCauses( text, causes );
   if ( causes.empty() )
      text.line( own.empty() ? "nothing is known to be wrong" : "because of " + own );
   ObjectReport older = object;
   for ( ValueReport &value : older.values )
      value.age += snapshot.older;
   addValues( text, older, &snapshot.history );
   std::vector<std::string> lines = text.lines();
   if ( snapshot.modules )
      for ( const CageModule &module : *snapshot.modules )
         if ( module.cage == object.name ) {
            const auto more = linesOf( module, columns );
            lines.emplace_back();
            lines.insert( lines.end(), more.begin(), more.end() );
         }
   return lines;
}

std::vector<std::string> detailOfBus( const BusUse &bus, size_t columns ) {
   TextSections text( columns );
   text.bare( "bus " + bus.bus );
   text.section( "now" );
   text.line( fmt::format( "{:.1f} % of the time busy, {:.1f} transfers a second, {} failed{}",
                           100 * bus.share, bus.transfersPerSecond, bus.failures,
                           bus.errors.empty() ? "" : ": " + bus.errors ) );
   text.section( "all" );
   text.line( fmt::format( "{} transfers since the server's start, {} failed", bus.all.transfers,
                           bus.all.failures ) );
   for ( const auto &[kind, count] : bus.all.errors )
      text.line( fmt::format( "  {:<9} {}", kind, count ) );
   return text.lines();
}

} // namespace

std::vector<Section> sectionsOf( const Snapshot &snapshot, size_t columns ) {
   std::vector<Section> sections{ causesOf( snapshot, columns ) };
   const auto add = [&]( const char *title, const std::vector<const ObjectReport *> &objects,
                         auto fill ) {
      if ( objects.empty() )
         return;
      sections.push_back( { .title = title } );
      fill( sections.back(), objects );
   };
   const auto rows = [&]( Section &section, const std::vector<const ObjectReport *> &objects ) {
      addObjects( section, objects, snapshot.older, columns );
   };
   add( "SUPPLIES", objectsOf( snapshot, Kind::Psu ), rows );
   add( "FANS", objectsOf( snapshot, Kind::Fan ), rows );
   add( "TEMPERATURES", objectsOf( snapshot, Kind::TempSensor ), rows );
   add( "CAGES", objectsOf( snapshot, Kind::Xcvr ),
        [&]( Section &section, const auto & ) { addCages( section, snapshot, columns ); } );
   add( "LEDS", objectsOf( snapshot, Kind::Led ),
        [&]( Section &section, const auto &leds ) { addLeds( section, leds, columns ); } );
   if ( !snapshot.busses.empty() || !snapshot.whyNoBusses.empty() )
      sections.push_back( bussesOf( snapshot, columns ) );
   add( "THE REST", others( snapshot ), rows );
   return sections;
}

std::string shownFor( const Snapshot &snapshot, const std::string &id ) {
   for ( const Health::Cause &cause : snapshot.health.causes )
      if ( id == std::string( idOfCauses ) + cause.key && !cause.object.empty() )
         return objectId( cause.object );
   return id;
}

std::vector<std::string> detailOf( const Snapshot &snapshot, const std::string &id,
                                   size_t columns ) {
   if ( const auto name = objectIn( id ) ) {
      if ( snapshot.detail && snapshot.detail->name == *name )
         return detailOfObject( snapshot, *snapshot.detail, columns );
      for ( const ObjectReport &object : snapshot.objects )
         if ( object.name == *name )
            return detailOfObject( snapshot, object, columns );
   }
   for ( const Health::Cause &cause : snapshot.health.causes )
      if ( id == std::string( idOfCauses ) + cause.key ) {
         TextSections text( columns );
         addCauses( text, { cause } );
         return text.lines();
      }
   for ( const BusUse &bus : snapshot.busses )
      if ( id == std::string( idOfBusses ) + bus.bus )
         return detailOfBus( bus, columns );
   return {};
}

} // namespace Host
