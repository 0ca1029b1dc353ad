#include "orbis-smbus/LoadOutput.h"

#include "smbus/BusLoads.h"

#include <fmt/format.h>

#include <map>

namespace SmbusClient {

namespace {

using namespace SmbusControl;

std::string nameOf( const Client &client ) {
   if ( client.process() == 0 )
      return "all others";
   return fmt::format( "{} ({})", client.program().empty() ? "?" : client.program(),
                       client.process() );
}

// What all clients had of all busses, by the name.
std::map<std::string, Bus::Load> clientsBetween( const Response &before, const Response &now,
                                                 double seconds ) {
   std::map<std::string, Bus::Load> loads;
   for ( const BusLoad &bus : now.bus() )
      for ( const Client &client : bus.client() ) {
         const Client &was = Bus::earlier( Bus::earlier( before, bus ), client );
         loads[nameOf( client )] += Bus::loadBetween( was.totals(), client.totals(), seconds );
      }
   return loads;
}

// Of a chip that failed since its last good transfer; else empty.
std::string failuresOf( const ChipLoad &chip ) {
   if ( chip.failures_in_a_row() == 0 )
      return {};
   return fmt::format( "  {} in a row, the last: {}", chip.failures_in_a_row(),
                       Bus::nameOf( chip.last_failure() ) );
}

class Table {
 public:
   Table( const Response &before, const Response &now, bool chips )
      : before_( before ), now_( now ), seconds_( now.seconds() - before.seconds() ),
        chips_( chips ) {}

   std::string write() {
      text_ = fmt::format( "{:.1f} s{}\n", seconds_,
                           before_.seconds() > 0 ? "" : " since the server's start" );
      text_ += fmt::format( "{:32}{:>8}{:>8}{:>12}{:>9}{:>11}{:>11}{:>11}  {}\n", "BUS", "WIRES",
                            "BUSY", "TRANSFERS", "FAILED", "MEDIAN", "99 %", "WORST", "ERRORS" );
      for ( const BusLoad &bus : now_.bus() )
         addBus( bus );
      if ( now_.lease().held() )
         text_ += fmt::format( "\n{}\n", Bus::describe( now_.lease() ) );
      text_ += fmt::format( "\n{:32}{:>8}{:>8}{:>12}{:>9}\n", "CLIENT", "WIRES", "BUSY",
                            "TRANSFERS", "FAILED" );
      for ( const auto &[name, load] : clientsBetween( before_, now_, seconds_ ) )
         if ( load.transfers > 0 )
            addRow( name, load );
      return text_;
   }

 private:
   void addRow( const std::string &name, const Bus::Load &load, const std::string &more = {},
                bool wires = true ) {
      text_ += fmt::format( "{:32}{:>8}{:>8}{:>12}{:>9}{}\n", name,
                            wires ? fmt::format( "{:.1f} %", 100 * load.wires ) : "-",
                            fmt::format( "{:.1f} %", 100 * load.busy ), load.transfers,
                            load.failures, more );
   }
   void addBus( const BusLoad &bus ) {
      const BusLoad &before = Bus::earlier( before_, bus );
      const Bus::WaitingTimes times = Bus::waitingTimesBetween( before, bus );
      std::string errors;
      for ( const auto &[kind, count] : Bus::errorsBetween( before.errors(), bus.errors() ) )
         if ( count > 0 )
            errors += fmt::format( "{}{} {}", errors.empty() ? "" : ", ", count, kind );
      if ( bus.has_held() )
         errors += fmt::format( "{}held since one {}", errors.empty() ? "" : ", ",
                                bus.held().empty() ? "on the bus itself" : "behind " + bus.held() );
      addRow( bus.bus(), Bus::loadBetween( before.totals(), bus.totals(), seconds_ ),
              fmt::format( "{:>8.3f} ms{:>8.3f} ms{:>8.3f} ms  {}", 1e3 * times.median,
                           1e3 * times.ninetyNinth, 1e3 * times.worst, errors ),
              bus.wires() );
      for ( const SmbusControl::Quarantined &segment : bus.quarantined() )
         text_ += fmt::format( "  !! {}\n", Bus::describe( segment ) );
      for ( const Segment &segment : bus.segment() ) {
         const Segment &was = Bus::earlier( before, segment );
         // Of a bus without multiplexers there is nothing more to tell.
         if ( bus.segment_size() > 1 )
            addRow( "  " + ( segment.path().empty() ? "root" : segment.path() ),
                    Bus::loadBetween( was.totals(), segment.totals(), seconds_ ), {}, bus.wires() );
         for ( const ChipLoad &chip : segment.chip() )
            if ( chips_ )
               addRow(
                  fmt::format( "    {:#04x}", chip.address() ),
                  Bus::loadBetween( Bus::earlier( was, chip ).totals(), chip.totals(), seconds_ ),
                  failuresOf( chip ), bus.wires() );
      }
   }

   const Response &before_;
   const Response &now_;
   const double seconds_;
   const bool chips_;
   std::string text_;
};

} // namespace

std::string formatLoad( const Response &before, const Response &now, bool chips, bool json ) {
   return json ? Bus::loadsAsJson( before, now ) + "\n" : Table( before, now, chips ).write();
}

} // namespace SmbusClient
