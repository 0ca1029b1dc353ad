#include "boardfiles/PanelFile.h"

#include "boardfiles/Nearest.h"
#include "boardfiles/Schema.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <utility>

namespace BoardFiles {
namespace {

struct Pair {
   double x = 0, y = 0;
};

Pair pairOf( const Json &json, std::string_view key ) {
   const auto pair = json.elementsOf( key );
   return pair.size() == 2 ? Pair{ *pair[0].toNumber(), *pair[1].toNumber() } : Pair();
}

// Sums of pair with a point.
constexpr double slack = 1e-6;

bool isInside( const PanelPlace &one, const PanelPlace &other ) {
   return one.x >= other.x - slack && one.y >= other.y - slack &&
          one.x + one.width <= other.x + other.width + slack &&
          one.y + one.height <= other.y + other.height + slack;
}

bool doTouch( const PanelPlace &one, const PanelPlace &other ) {
   return one.x < other.x + other.width - slack && other.x < one.x + one.width - slack &&
          one.y < other.y + other.height - slack && other.y < one.y + one.height - slack;
}

class PanelReader {
 public:
   PanelReader( const std::vector<std::string> &objects, Findings &findings )
      : objects_( objects ), findings_( findings ) {}

   PanelSide side( const Json &json ) {
      PanelSide side{ .name = json.textOf( "name" ).value_or( "" ),
                      .width = json.numberOf( "width" ).value_or( 0 ),
                      .height = json.numberOf( "height" ).value_or( 0 ) };
      for ( const Json &places : json.elementsOf( "places" ) )
         addPlaces( places, side );
      return side;
   }

 private:
   void addPlaces( const Json &json, PanelSide &side ) {
      const Pair at = pairOf( json, "at" ), size = pairOf( json, "size" ),
                 step = pairOf( json, "step" );
      const size_t rows = json.unsignedOf( "rows" ).value_or( 1 );
      const auto names = json.elementsOf( "objects" );
      if ( names.size() > 1 && !json.find( "step" ) )
         return report( findings_, json.place(), "several objects need a \"step\"" );
      for ( size_t i = 0; i < names.size(); ++i ) {
         const size_t column = i / rows, row = i % rows;
         PanelPlace place{ .object = std::string( *names[i].toText() ),
                           .x = at.x + step.x * static_cast<double>( column ),
                           .y = at.y + step.y * static_cast<double>( row ),
                           .width = size.x,
                           .height = size.y };
         check( place, side, names[i].place() );
         side.places.push_back( std::move( place ) );
      }
   }

   void check( const PanelPlace &place, const PanelSide &side, const Place &where ) {
      if ( std::find( objects_.begin(), objects_.end(), place.object ) == objects_.end() )
         report( findings_, where,
                 fmt::format( "no object is named \"{}\"{}", place.object,
                              didYouMean( place.object, objects_ ) ) );
      if ( !seen_.insert( place.object ).second )
         report( findings_, where, fmt::format( "\"{}\" has a place already", place.object ) );
      if ( !isInside( place, { .width = side.width, .height = side.height } ) )
         report( findings_, where,
                 fmt::format( "\"{}\" reaches to {:g}, {:g}, but its side is {:g} by {:g}",
                              place.object, place.x + place.width, place.y + place.height,
                              side.width, side.height ) );
      // A part is inside of its module.
      for ( const PanelPlace &other : side.places )
         if ( doTouch( place, other ) && !isInside( place, other ) && !isInside( other, place ) )
            report( findings_, where,
                    fmt::format( "\"{}\" is half upon \"{}\"", place.object, other.object ) );
   }

   const std::vector<std::string> &objects_;
   Findings &findings_;
   std::set<std::string> seen_{};
};

} // namespace

Panel readPanel( const std::filesystem::path &path, const std::vector<std::string> &objects,
                 Findings &findings ) {
   static const Schema schema( panelSchema );
   const auto json = readJson( path, findings );
   if ( !json )
      return {};
   const size_t before = findings.size();
   schema.check( *json, findings );
   if ( findings.size() > before )
      return {};
   PanelReader reader( objects, findings );
   Panel panel;
   for ( const Json &side : json->elementsOf( "sides" ) )
      panel.push_back( reader.side( side ) );
   return panel;
}

} // namespace BoardFiles
