#include "orbis-smbus/Formatting.h"
#include "orbis-smbus/Output.h"

#include <fmt/format.h>

namespace SmbusClient {

namespace {

void addFields( Json &json, const SmbusControl::Quantity &quantity ) {
   add( json, "name", quantity.name() );
   add( json, "value", quantity.value() );
   add( json, "unit", quantity.unit() );
   add( json, "settable", quantity.settable() );
}

std::string valueOf( const SmbusControl::Quantity &quantity ) {
   return fmt::format( "{:.6g}{}{}", quantity.value(), quantity.unit().empty() ? "" : " ",
                       quantity.unit() );
}

// What is known of a transfer that has passed.
void addWires( Json &to, const SmbusControl::Transfer &transfer ) {
   add( to, "segment", transfer.segment() );
   add( to, "process", uint64_t{ transfer.process() } );
   add( to, "took", static_cast<double>( transfer.wires().took_ns() ) / 1e9 );
   if ( transfer.wires().has_bytes() )
      add( to, "bytesOnTheWires", uint64_t{ transfer.wires().bytes() } );
   add( to, "cut", transfer.wires().cut() );
}

} // namespace

std::string formatQuantity( const SmbusControl::Quantity &quantity, bool json ) {
   if ( json )
      return jsonObject( [&]( Json &to ) { addFields( to, quantity ); } );
   return valueOf( quantity ) + "\n";
}

std::string formatState( const SmbusControl::State &state, bool json ) {
   if ( json )
      return jsonObject( [&]( Json &to ) {
         add( to, "seconds", state.seconds() );
         add( to, "speed", state.speed() );
         add( to, "powered", state.powered() );
         add( to, "transfers", state.transfers() );
         add( to, "bytes", state.bytes() );
         to.Key( "modules" );
         to.StartArray();
         for ( const auto &module : state.module() ) {
            to.StartObject();
            add( to, "name", module.name() );
            add( to, "present", module.present() );
            to.EndObject();
         }
         to.EndArray();
         to.Key( "chips" );
         to.StartArray();
         for ( const auto &chip : state.chip() ) {
            to.StartObject();
            add( to, "name", chip.name() );
            add( to, "kind", chip.kind() );
            to.Key( "address" );
            to.Uint( chip.address() );
            add( to, "present", chip.present() );
            add( to, "faulty", chip.faulty() );
            to.Key( "quantities" );
            to.StartArray();
            for ( const auto &quantity : chip.quantity() ) {
               to.StartObject();
               addFields( to, quantity );
               to.EndObject();
            }
            to.EndArray();
            to.EndObject();
         }
         to.EndArray();
      } );
   std::string text = fmt::format( "{:.3f} s, speed {:g}, power {}, {} transfers of {} bytes\n",
                                   state.seconds(), state.speed(), state.powered() ? "on" : "off",
                                   state.transfers(), state.bytes() );
   for ( const auto &module : state.module() )
      text += fmt::format( "module {:16} {}\n", module.name(), module.present() ? "in" : "out" );
   for ( const auto &chip : state.chip() ) {
      text +=
         fmt::format( "chip {:18} {:12} {:#04x}{}{}\n", chip.name(), chip.kind(), chip.address(),
                      chip.present() ? "" : " absent", chip.faulty() ? " faulty" : "" );
      for ( const auto &quantity : chip.quantity() )
         text += fmt::format( "   {:24} {}\n", quantity.name(), valueOf( quantity ) );
   }
   return text;
}

std::string formatTransfer( const SmbusControl::Transfer &transfer, bool json ) {
   if ( json )
      return jsonObject( [&]( Json &to ) {
         add( to, "seconds", transfer.seconds() );
         add( to, "bus", transfer.bus() );
         add( to, "chip", transfer.chip() );
         to.Key( "address" );
         to.Uint( transfer.address() );
         add( to, "operation", transfer.operation() );
         addBytes( to, "written", transfer.written() );
         addBytes( to, "read", transfer.read() );
         add( to, "error", transfer.error() );
         add( to, "lost", transfer.lost() );
         if ( transfer.has_wires() )
            addWires( to, transfer );
      } );
   std::string line =
      transfer.lost() ? fmt::format( "({} transfers lost)\n", transfer.lost() ) : "";
   const std::string &from = transfer.has_wires() ? transfer.segment() : transfer.chip();
   line += fmt::format( "{:12.6f} {:14} {:16} {}", transfer.seconds(), transfer.bus(),
                        from.empty() ? "-" : from, transfer.operation() );
   if ( !transfer.written().empty() )
      line += ":" + hex( transfer.written() );
   if ( !transfer.error().empty() )
      line += ": " + transfer.error();
   else if ( !transfer.read().empty() )
      line += " ->" + hex( transfer.read() );
   if ( transfer.wires().cut() > 0 )
      line += fmt::format( " (and {} bytes)", transfer.wires().cut() );
   return line + "\n";
}

} // namespace SmbusClient
