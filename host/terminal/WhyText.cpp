#include "host/terminal/WhyText.h"

#include "host/Times.h"
#include "host/journal/EventText.h"
#include "host/terminal/Table.h"
#include "screen/Wrap.h"

#include <algorithm>
#include <fmt/ranges.h>
#include <utility>

namespace Host {
namespace {

constexpr size_t margin = 12;

// Lines in sections. The first line of each has its name in the margin.
class Sections {
 public:
   explicit Sections( size_t columns ) : columns_( columns ) {}

   void section( std::string name ) { name_ = std::move( name ); }
   // `indent` further blanks for what goes on in the next line.
   void line( const std::string &text, size_t indent = 2 ) {
      Screen::wrap( lines_, fmt::format( "{:<{}}{}", std::exchange( name_, {} ), margin, text ),
                    margin + indent, columns_ );
   }
   // All names, or at a terminal as many as a person reads.
   std::string list( const std::vector<std::string> &names ) const {
      constexpr size_t most = 12;
      if ( columns_ == 0 || names.size() <= most + 1 )
         return fmt::format( "{}", fmt::join( names, ", " ) );
      return fmt::format( "{} and {} more", fmt::join( names.begin(), names.begin() + most, ", " ),
                          names.size() - most );
   }
   void bare( const std::string &text ) { Screen::wrap( lines_, text, margin, columns_ ); }
   const std::vector<std::string> &lines() const { return lines_; }

 private:
   const size_t columns_;
   std::string name_{};
   std::vector<std::string> lines_{};
};

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

void addPlace( Sections &screen, const Why &why ) {
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

std::string withUnit( double number, const std::string &unit ) {
   return toText( Scalar( number ) ) + ( unit.empty() ? "" : " " + unit );
}

std::string timeOfDay( Health::WallTime time ) { return localTimeText( time ).substr( 11 ); }

void addHealth( Sections &screen, const Health::ValueHealth &health, const std::string &unit ) {
   const auto number = [&unit]( double what ) { return withUnit( what, unit ); };
   if ( !health.crossed.empty() )
      screen.line( "  " + health.crossed, 4 );
   if ( health.limits ) {
      std::vector<std::string> limits;
      const auto limit = [&]( const char *where, const std::optional<double> &what ) {
         if ( what )
            limits.push_back( fmt::format( "{} {}", where, number( *what ) ) );
      };
      limit( "critical below", health.limits->lowCritical );
      limit( "warning below", health.limits->lowWarning );
      limit( "warning above", health.limits->highWarning );
      limit( "critical above", health.limits->highCritical );
      screen.line( fmt::format( "  limits: {}", fmt::join( limits, ", " ) ), 4 );
   }
   if ( health.since != Health::WallTime() )
      screen.line( fmt::format( "  {} since {}; {} change{} of level before",
                                nameOf( health.level ), localTimeText( health.since ),
                                health.changes, health.changes == 1 ? "" : "s" ),
                   4 );
   if ( health.lowest && health.highest )
      screen.line( fmt::format( "  lowest {} at {}, highest {} at {}",
                                number( health.lowest->number ), localTimeText( health.lowest->at ),
                                number( health.highest->number ),
                                localTimeText( health.highest->at ) ),
                   4 );
   std::vector<std::string> last;
   for ( const Health::Extreme &reading : health.last )
      last.push_back( toText( Scalar( reading.number ) ) );
   if ( !last.empty() )
      screen.line( fmt::format( "  last, {} to {}: {}", timeOfDay( health.last.front().at ),
                                timeOfDay( health.last.back().at ), fmt::join( last, ", " ) ),
                   4 );
}

void addValues( Sections &screen, const ObjectReport &object ) {
   screen.section( "values" );
   for ( size_t i = 0; i < object.values.size(); ++i ) {
      const Reading &reading = object.values[i].reading;
      const std::string fault = toText( reading.fault );
      const bool hasNumber = !std::holds_alternative<std::monostate>( reading.value );
      screen.line( fmt::format(
         "{}: {}{}, {}{}, {:.1f} s old", reading.name, toText( reading.value ),
         hasNumber && !reading.unit.empty() ? " " + reading.unit : "", nameOf( reading.state ),
         fault.empty() ? "" : ": " + fault, object.values[i].age ) );
      if ( object.health && i < object.health->values.size() )
         addHealth( screen, object.health->values[i], reading.unit );
   }
   if ( object.values.empty() )
      screen.line( "none are read" );
}

void addCauses( Sections &screen, const Why &why ) {
   screen.section( "why" );
   if ( why.causes.empty() && why.object.health && why.object.health->level == Health::Level::Ok )
      return screen.line( "nothing is wrong" );
   for ( size_t i = 0; i < why.chain.size(); ++i ) {
      const WhyStep &step = why.chain[i];
      const bool isSame = i > 0 && step.words == why.chain[i - 1].words;
      screen.line( fmt::format( "{}: {}, {}", step.object, nameOf( step.level ),
                                isSame ? "the same" : step.words ) );
   }
   for ( const Health::Cause &cause : why.causes ) {
      screen.line( fmt::format( "because of \"{}\": {}", cause.key, cause.words ) );
      screen.line( fmt::format( "  {} since {}{}{}", nameOf( cause.level ),
                                localTimeText( cause.since ),
                                cause.isAcknowledged ? ", acknowledged" : "",
                                cause.isHidden ? ", hidden by another cause now" : "" ),
                   4 );
      if ( !cause.explains.empty() )
         screen.line( "  explains " + screen.list( cause.explains ), 4 );
   }
   if ( why.causes.empty() )
      screen.line( "no cause is known" );
}

void addNeighbours( Sections &screen, const Why &why ) {
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

void addTransfers( Sections &screen, const Why &why ) {
   screen.section( "transfers" );
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

void addRegisters( Sections &screen, const std::vector<ChipReadings> &chips ) {
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

void addEvents( Sections &screen, const Why &why ) {
   screen.section( "events" );
   for ( const Health::Event &event : why.events )
      screen.line( fmt::format( "{}  {}  {}", localTimeText( event.time ), kindOf( event ),
                                textOf( event ) ) );
   if ( why.events.empty() )
      screen.line( "none" );
}

} // namespace

std::vector<std::string> linesOf( const Why &why, size_t columns ) {
   Sections screen( columns );
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
