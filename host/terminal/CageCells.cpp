#include "host/terminal/CageCells.h"

#include "host/terminal/CageGrid.h"
#include "host/terminal/ModuleText.h"
#include "host/terminal/ObjectRows.h"
#include "host/terminal/Standing.h"
#include "host/terminal/Table.h"
#include "screen/Width.h"
#include "screen/Wrap.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>

namespace Host {
namespace {

using Screen::Style;

constexpr size_t manyColumns = 110, manyLanes = 4; // room for the light of each lane

const CageModule *moduleIn( const Snapshot &snapshot, const std::string &cage ) {
   if ( snapshot.modules )
      for ( const CageModule &module : *snapshot.modules )
         if ( module.cage == cage )
            return &module;
   return nullptr;
}

// Of each lane where there is room, else the least.
std::string lightIn( const Optics::Module &module, size_t columns ) {
   return columns < manyColumns || module.lanes.size() > manyLanes ? leastLightOf( module )
                                                                   : lightOf( module );
}

// What is wrong in a cage, and how bad that is.
struct Wrong {
   Standing standing = Standing::Ok;
   std::string words{};
};

Wrong wrongOf( const ObjectReport &cage, const CageModule *module ) {
   if ( const std::string fault = faultOf( cage ); !fault.empty() )
      return { Standing::Unreadable, fault };
   const Standing own = standingOf( cage );
   if ( own == Standing::Absent || !module || module->state == State::Absent )
      return { own };
   if ( isBad( module->state ) )
      return { module->state == State::Stale ? Standing::Stale : Standing::Unreadable,
               fmt::format( "module {}: {}", nameOf( module->state ), toText( module->fault ) ) };
   if ( !module->module )
      return { own };
   const std::string worst = worstOf( *module->module );
   const Standing told = worst.empty()                  ? Standing::Ok
                         : worst.ends_with( "warning" ) ? Standing::Warning
                                                        : Standing::Critical;
   return { std::max( own, told ), worst };
}

void addNotes( Screen::Section &section, const std::map<std::string, std::vector<std::string>> &who,
               const std::map<std::string, Standing> &bad, size_t columns ) {
   for ( const auto &[words, cages] : who ) {
      const Sign &sign = signOf( bad.at( words ) );
      std::vector<std::string> lines;
      Screen::wrap(
         lines,
         fmt::format( "{} {}{}: {}", sign.mark, cages.front(),
                      cages.size() == 1 ? "" : fmt::format( " and {} more", cages.size() - 1 ),
                      words ),
         5, columns );
      section.notes.push_back( { "", Screen::linesOf( lines, sign.style ) } );
   }
}

} // namespace

void addCages( Screen::Section &section, const Snapshot &snapshot, size_t columns ) {
   struct Cell {
      const ObjectReport *cage;
      std::string marks, light;
      Wrong wrong;
   };
   std::vector<Cell> cells;
   std::map<std::string, std::vector<std::string>> who;
   std::map<std::string, Standing> bad;
   StandingCount count;
   size_t nameWidth = 0, marksWidth = 0, lightWidth = 0;
   for ( const ObjectReport &object : snapshot.objects ) {
      if ( !isCage( object ) )
         continue;
      const CageModule *module = moduleIn( snapshot, object.name );
      Cell cell{ &object, marksOf( object ), "", wrongOf( object, module ) };
      std::erase( cell.marks, '-' ); // lines that are off
      if ( module && module->module && module->state != State::Absent )
         cell.light = lightIn( *module->module, columns );
      nameWidth = std::max( nameWidth, Screen::widthOf( object.name ) );
      marksWidth = std::max( marksWidth, Screen::widthOf( cell.marks ) );
      lightWidth = std::max( lightWidth, Screen::widthOf( cell.light ) );
      count.add( cell.wrong.standing );
      if ( !cell.wrong.words.empty() ) {
         who[cell.wrong.words].push_back( object.name );
         bad[cell.wrong.words] = cell.wrong.standing;
      }
      cells.push_back( std::move( cell ) );
   }
   section.summary = count.line();
   const std::string legend =
      fmt::format( "   {}{}", cageLegend, snapshot.modules ? "; light in dBm" : "" );
   std::vector<std::string> lines;
   Screen::wrap( lines, legend, 3, columns );
   if ( !snapshot.modules )
      lines.emplace_back( "   modules: only with serve" );
   section.legend = Screen::linesOf( lines, Style::Faint );
   for ( const Cell &cell : cells ) {
      const Sign &sign = signOf( cell.wrong.standing );
      const bool isAbsent = cell.wrong.standing == Standing::Absent;
      Screen::Line line{
         { fmt::format( "{} {} ", cell.wrong.standing > Standing::Absent ? sign.mark : "  ",
                        Screen::fill( cell.cage->name, nameWidth ) ),
           isAbsent || cell.wrong.standing > Standing::Absent ? sign.style : Style::Plain },
         { Screen::fill( cell.marks, marksWidth ), isAbsent ? Style::Faint : Style::Plain }
      };
      if ( lightWidth > 0 )
         line.push_back( { " " + Screen::fill( cell.light, lightWidth ) } );
      section.cells.push_back( { objectId( cell.cage->name ), { line } } );
   }
   addNotes( section, who, bad, columns );
}

void addLeds( Screen::Section &section, const std::vector<const ObjectReport *> &leds,
              size_t columns ) {
   std::map<std::string, std::vector<std::string>> who;
   std::map<std::string, Standing> bad;
   StandingCount count;
   size_t nameWidth = 0;
   for ( const ObjectReport *led : leds )
      nameWidth = std::max( nameWidth, Screen::widthOf( led->name ) );
   for ( const ObjectReport *led : leds ) {
      const Standing standing = standingOf( *led );
      const Sign &sign = signOf( standing );
      const ValueReport *setting = led->find( "setting" );
      count.add( standing );
      if ( const std::string fault = toText( led->fault ); !fault.empty() ) {
         who[fault].push_back( led->name );
         bad[fault] = standing;
      }
      const std::string word = standing > Standing::Other ? std::string( sign.word )
                               : setting                  ? toText( setting->reading.value )
                                                          : "-";
      section.cells.push_back(
         { objectId( led->name ),
           { { { fmt::format( "{} {} {:<10}", sign.mark, Screen::fill( led->name, nameWidth ),
                              word ),
                 standing > Standing::Other ? sign.style : Style::Plain } } } } );
   }
   section.summary = count.line();
   section.summary.push_back( { "  (-: not set by this program)", Style::Faint } );
   addNotes( section, who, bad, columns );
}

} // namespace Host
