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

using Screen::Line;
using Screen::Span;

constexpr std::string_view idOfObjects = "object ";
constexpr size_t stateWidth = 11, ageWidth = 7, longestName = 24, noteIndent = 6;

// What a unit says already stands in a value's name once more: "input_voltage", "temperature".
std::string labelOf( const Reading &reading ) {
   if ( reading.unit.empty() )
      return reading.name;
   const size_t end = reading.name.rfind( '_' );
   return end == std::string::npos ? "" : reading.name.substr( 0, end );
}

// Those of one label stand together: "input 230.0 V 1.25 A".
std::vector<std::pair<std::string, std::vector<size_t>>> byLabel( const ObjectReport &object ) {
   std::vector<std::pair<std::string, std::vector<size_t>>> groups;
   for ( size_t i = 0; i < object.values.size(); ++i ) {
      if ( object.values.size() > 1 && object.values[i].reading.state == State::Unsupported )
         continue;
      const std::string label =
         object.values.size() == 1 ? "" : labelOf( object.values[i].reading );
      const auto known = std::find_if( groups.begin(), groups.end(),
                                       [&]( const auto &one ) { return one.first == label; } );
      if ( known != groups.end() )
         known->second.push_back( i );
      else
         groups.push_back( { label, { i } } );
   }
   return groups;
}

// The words of all values; a value that is not good has its sign behind it.
std::vector<Span> wordsOf( const ObjectReport &object ) {
   std::vector<Span> words;
   for ( const auto &[label, values] : byLabel( object ) ) {
      bool isFirst = true;
      for ( const size_t i : values ) {
         const Reading &reading = object.values[i].reading;
         const Standing standing = standingOf( object, i );
         std::string text = toText( reading.value );
         if ( text != "-" && !reading.unit.empty() )
            text += " " + reading.unit;
         if ( isFirst && !label.empty() )
            text = label + " " + text;
         isFirst = false;
         const bool isGood = standing <= Standing::Absent;
         const Sign &sign = signOf( standing );
         if ( !isGood )
            text += " " + std::string( sign.mark.substr( sign.mark.find_first_not_of( ' ' ) ) );
         words.push_back( { text, isGood ? Screen::Style::Plain : sign.style } );
      }
   }
   return words;
}

// Lines that begin with `begin`; words that don't fit stand below the first ones.
std::vector<Line> spread( const Line &begin, const std::vector<Span> &words, size_t columns ) {
   const size_t indent = widthOf( begin );
   std::vector<Line> lines{ begin };
   for ( const Span &word : words ) {
      const bool isFirst = widthOf( lines.back() ) == indent;
      if ( !isFirst && widthOf( lines.back() ) + 2 + Screen::widthOf( word.text ) > columns ) {
         lines.push_back( { { std::string( indent, ' ' ) } } );
      } else if ( !isFirst ) {
         lines.back().push_back( { "  " } );
      }
      // A long text, as that of a supply's status, goes on below.
      std::vector<std::string> parts;
      Screen::wrap( parts, std::string( indent, ' ' ) + word.text, indent, columns );
      for ( size_t i = 0; i < parts.size(); ++i ) {
         if ( i > 0 )
            lines.push_back( { { std::string( indent, ' ' ) } } );
         lines.back().push_back( { parts[i].substr( indent ), word.style } );
      }
   }
   return lines;
}

std::string shortAge( double age ) {
   return age < 100    ? fmt::format( "{:.1f} s", age )
          : age < 6000 ? fmt::format( "{:.0f} min", age / 60 )
                       : fmt::format( "{:.0f} h", age / 3600 );
}

double oldest( const ObjectReport &object ) {
   double age = object.values.empty() ? object.age : 0;
   for ( const ValueReport &value : object.values )
      age = std::max( age, value.age );
   return age;
}

// What is wrong with its values, and what explains it. What can't be read because of something else
// has only that here: the detail tells the rest.
std::vector<std::string> wrongsOf( const ObjectReport &object, Standing standing ) {
   const std::string cause = object.health ? object.health->cause : "";
   const bool isOther = !cause.empty() && !cause.starts_with( object.name + " " );
   std::vector<std::string> wrongs;
   const auto add = [&wrongs]( std::string text ) {
      if ( !text.empty() && std::find( wrongs.begin(), wrongs.end(), text ) == wrongs.end() )
         wrongs.push_back( std::move( text ) );
   };
   if ( standing != Standing::Absent && ( !isOther || standing >= Standing::Warning ) ) {
      add( toText( object.fault ) );
      for ( size_t i = 0; i < object.values.size(); ++i ) {
         const Reading &reading = object.values[i].reading;
         if ( object.health && i < object.health->values.size() &&
              !object.health->values[i].crossed.empty() )
            add( fmt::format( "{} {}", reading.name, object.health->values[i].crossed ) );
         else if ( reading.state != State::Unsupported )
            add( toText( reading.fault ) );
      }
   }
   if ( isOther || ( wrongs.empty() && !cause.empty() ) )
      wrongs.push_back( "because of " + cause );
   return wrongs;
}

std::string_view wordOf( const ObjectReport &object, Standing standing ) {
   return standing == Standing::Other ? nameOf( object.state ) : signOf( standing ).word;
}

Screen::Item itemOf( const ObjectReport &object, double older, size_t nameWidth, size_t columns ) {
   const Standing standing = standingOf( object );
   const Sign &sign = signOf( standing );
   const Line begin{ { std::string( sign.mark ), sign.style },
                     { " " + Screen::fill( object.name, nameWidth ) + " " },
                     { Screen::fill( std::string( wordOf( object, standing ) ), stateWidth ),
                       sign.style },
                     { fmt::format( "{:>{}}  ", shortAge( oldest( object ) + older ), ageWidth ),
                       Screen::Style::Faint } };
   const bool hasValues =
      std::any_of( object.values.begin(), object.values.end(), []( const auto &value ) {
         return !std::holds_alternative<std::monostate>( value.reading.value ) ||
                value.reading.state == State::Unsupported;
      } );
   Screen::Item item{ objectId( object.name ),
                      spread( begin, hasValues ? wordsOf( object ) : std::vector<Span>(),
                              columns ) };
   for ( const std::string &wrong : wrongsOf( object, standing ) ) {
      std::vector<std::string> lines;
      Screen::wrap( lines, std::string( noteIndent, ' ' ) + wrong, noteIndent, columns );
      for ( const std::string &line : lines )
         item.lines.push_back( { { line, sign.style } } );
   }
   return item;
}

} // namespace

std::string objectId( const std::string &name ) { return std::string( idOfObjects ) + name; }

std::optional<std::string> objectIn( const std::string &id ) {
   if ( !id.starts_with( idOfObjects ) )
      return {};
   return id.substr( idOfObjects.size() );
}

void addObjects( Screen::Section &section, const std::vector<const ObjectReport *> &objects,
                 double older, size_t columns ) {
   size_t width = 0;
   StandingCount count;
   for ( const ObjectReport *object : objects ) {
      width = std::max( width, std::min( Screen::widthOf( object->name ), longestName ) );
      count.add( standingOf( *object ) );
   }
   section.summary = count.line();
   for ( const ObjectReport *object : objects )
      section.items.push_back( itemOf( *object, older, width, columns ) );
}

} // namespace Host
