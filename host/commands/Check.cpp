#include "host/commands/Commands.h"

#include "host/JsonWriter.h"

#include <algorithm>
#include <fmt/format.h>

namespace Host {
namespace {

using BoardFiles::BusLoad;

constexpr double milli = 1e-3;

std::string toJson( const std::vector<BusLoad> &loads, double period ) {
   JsonWriter json;
   json.beginList();
   for ( const BusLoad &load : loads ) {
      const BoardFiles::WireCost cost = load.refresh( period );
      json.beginObject().member( "bus", toString( load.bus ) ).member( "wires", load.hasWires );
      if ( load.hasWires )
         json.member( "transfers", cost.transfers )
            .member( "bits", cost.bits )
            .member( "clock", int64_t{ load.clock } )
            .member( "seconds", load.seconds( period ) )
            .member( "period", period )
            .member( "share", load.share( period ) );
      json.endObject();
   }
   return json.endList().text();
}

void print( const std::vector<BusLoad> &loads, double period ) {
   size_t width = 0;
   for ( const BusLoad &load : loads )
      width = std::max( width, toString( load.bus ).size() );
   for ( const BusLoad &load : loads ) {
      const std::string bus = toString( load.bus );
      if ( !load.hasWires )
         fmt::print( "{:{}}  no wires: I/O ports\n", bus, width );
      else
         fmt::print( "{:{}}  {:4.0f} transfers  {:6.1f} ms of {:g} ms  {:3.0f} %\n", bus, width,
                     load.refresh( period ).transfers, load.seconds( period ) / milli,
                     period / milli, 100 * load.share( period ) );
   }
}

} // namespace

int check( const Options &options ) {
   BoardFiles::Findings findings;
   const auto board = BoardFiles::loadBoard( options.board, options.drivers, findings );
   const auto loads = board ? board->busses : std::vector<BusLoad>();
   BoardFiles::warnOfLoads( loads, options.period, findings );
   if ( options.json ) {
      fmt::print( "{{\"findings\":{},\"busses\":{}}}\n", BoardFiles::toJson( findings ),
                  toJson( loads, options.period ) );
   } else {
      for ( const BoardFiles::Finding &finding : findings )
         fmt::print( stderr, "{}\n", BoardFiles::toText( finding ) );
   }
   if ( !options.json )
      print( loads, options.period );
   if ( !board || ( options.strict && !findings.empty() ) )
      return exitBadBoard;
   if ( !options.json )
      fmt::print( "{}: {} objects, {}\n", options.board.string(),
                  BoardFiles::withoutModules( *board ).objects.size(),
                  findings.empty() ? "no errors" : "no errors, but warnings" );
   return exitOk;
}

} // namespace Host
