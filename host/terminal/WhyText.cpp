#include "host/terminal/WhyText.h"

#include "host/Times.h"
#include "host/journal/EventText.h"
#include "host/terminal/ObjectText.h"

#include <algorithm>
#include <fmt/ranges.h>

namespace Host {
namespace {

// "bus scd(4):1:2, multiplexer 0x70 channel 1, chip 0x58".
std::string wayTo( const BoardFiles::ChipPlace &place ) {
   std::string text = "bus " + place.bus;
   for ( size_t begin = 0; begin < place.path.size(); ) {
      const size_t equals = place.path.find( '=', begin );
      const size_t end = std::min( place.path.find( ' ', begin ), place.path.size() );
      text +=
         fmt::format( ", multiplexer {} channel {}", place.path.substr( begin, equals - begin ),
                      place.path.substr( equals + 1, end - equals - 1 ) );
      begin = end + 1;
   }
   return text + fmt::format( ", chip {:#04x}", place.address );
}

void addPlace( TextSections &screen, const Why &why ) {
   screen.section( "where" );
   for ( const BoardFiles::ChipPlace &chip : why.chips )
      screen.line( wayTo( chip ) );
   if ( why.chips.empty() )
      screen.line( "no chip of its own" );
   if ( !why.driver.empty() )
      screen.line( fmt::format( "driver {}{}", why.driver,
                                why.did ? fmt::format( ", did {}", *why.did ) : "" ) );
   if ( !why.on.empty() )
      screen.line( fmt::format( "on {}", fmt::join( why.on, ", on " ) ) );
}

void addCauses( TextSections &screen, const Why &why ) {
   screen.section( "why" );
   if ( why.causes.empty() && why.object.health && why.object.health->level == Health::Level::Ok )
      return screen.line( "nothing is wrong" );
   for ( size_t i = 0; i < why.chain.size(); ++i ) {
      const WhyStep &step = why.chain[i];
      const bool isSame = i > 0 && step.words == why.chain[i - 1].words;
      screen.line( fmt::format( "{}: {}, {}", step.object, nameOf( step.level ),
                                isSame ? "the same" : step.words ) );
   }
   addCauses( screen, why.causes );
   if ( why.causes.empty() )
      screen.line( "no cause is known" );
}

void addNeighbours( TextSections &screen, const Why &why ) {
   screen.section( "neighbours" );
   for ( const ChipNeighbour &chip : why.neighbours )
      screen.line( fmt::format( "{:#04x} {}: {}", chip.place.address,
                                !chip.answers   ? "is not read"
                                : *chip.answers ? "answers"
                                                : "doesn't answer",
                                screen.list( chip.objects ) ) );
   if ( why.neighbours.empty() )
      screen.line( "none" );
}

void addTransfers( TextSections &screen, const Why &why ) {
   screen.section( "transfers" );
   for ( const std::string &segment : why.leftAlone )
      screen.line( segment );
   for ( const PassedTransfer &transfer : why.transfers ) {
      const std::string &result = transfer.error.empty() ? transfer.data : transfer.error;
      screen.line( fmt::format( "{:.1f} s ago: {}{}{}", transfer.age, transfer.operation,
                                result.empty() ? "" : ": ", result ) );
   }
   if ( !why.whyNoTransfers.empty() )
      screen.line( "not known: " + why.whyNoTransfers );
   else if ( why.transfers.empty() )
      screen.line( "the server remembers none" );
}

void addRegisters( TextSections &screen, const std::vector<ChipReadings> &chips ) {
   screen.section( "registers" );
   for ( const ChipReadings &chip : chips ) {
      screen.line( fmt::format( "of {:#04x}{}", chip.place.address,
                                !chip.whyNone.empty() ? ": " + chip.whyNone
                                                      : ", through " + chip.through + ":" ) );
      for ( const RegisterReading &reading : chip.registers )
         screen.line( fmt::format( "  {:#04x} {:<24} {}", reading.what.number, reading.what.name,
                                   reading.value ? fmt::format( "{:#0{}x}", *reading.value,
                                                                2 + 2 * reading.what.bytes )
                                                 : reading.error ),
                      4 );
   }
   if ( chips.empty() )
      screen.line( "no chip of its own" );
}

void addEvents( TextSections &screen, const Why &why ) {
   screen.section( "events" );
   for ( const Health::Event &event : why.events )
      screen.line( fmt::format( "{}  {}  {}", localTimeText( event.time ), kindOf( event ),
                                textOf( event ) ) );
   if ( why.events.empty() )
      screen.line( "none" );
}

} // namespace

std::vector<std::string> linesOf( const Why &why, size_t columns ) {
   TextSections screen( columns );
   const ObjectReport &object = why.object;
   const std::string fault = toText( object.fault );
   screen.bare(
      fmt::format( "{}: {}, {}{}{}{}", object.name, object.type, nameOf( object.state ),
                   object.health ? fmt::format( ", {}", nameOf( object.health->level ) ) : "",
                   object.health && object.health->isAbsent ? ", absent" : "",
                   fault.empty() ? "" : ": " + fault ) );
   addPlace( screen, why );
   addValues( screen, object );
   addCauses( screen, why );
   addNeighbours( screen, why );
   addTransfers( screen, why );
   addRegisters( screen, why.registers );
   addEvents( screen, why );
   return screen.lines();
}

} // namespace Host
