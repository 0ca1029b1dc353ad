#include "orbis-smbus/Commands.h"

#include "orbis-smbus/ControlConnection.h"
#include "orbis-smbus/LoadOutput.h"
#include "orbis-smbus/Output.h"
#include "orbis-smbus/Scenario.h"
#include "orbis-smbus/ServerConnection.h"
#include "orbis-smbus/Vcd.h"
#include "orbis-smbus/WriteQuestion.h"
#include "smbus/RecordingFile.h"
#include "smbus/RootBus.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <fmt/format.h>
#include <map>
#include <thread>

namespace SmbusClient {

namespace {

void print( const std::string &text ) { std::fputs( text.c_str(), stdout ); }

Reading tryToRead( ServerConnection &server, const Target &target, uint32_t offset,
                   uint32_t length ) {
   try {
      return { server.ask( target, Smbus::REQUEST_READ, offset, length ), {} };
   } catch ( const Failed &failure ) {
      return { {}, failure.what() };
   }
}

std::string controlPath( const Options &options ) {
   if ( !options.control.empty() )
      return options.control;
   return serverPath() + ".control";
}

void traceLast( const Options &options ) {
   SmbusControl::Request request;
   request.mutable_last()->set_bus( options.pastBus );
   request.mutable_last()->set_failures( options.failures );
   ControlConnection server( controlPath( options ) );
   const SmbusControl::Response response = server.ask( request );
   if ( options.vcd )
      return print( formatVcd( response.passed() ) );
   for ( const SmbusControl::Transfer &transfer : response.passed() )
      print( formatTransfer( transfer, options.json ) );
}

} // namespace

void read( const Options &options ) {
   ServerConnection server( options.retries, ServerConnection::Use::Reads );
   const Size size = options.size.value_or( Size{} );
   const bool block = size.form == Size::Form::Block;
   std::string data;
   if ( options.offset )
      data = server.ask( options.target, block ? Smbus::REQUEST_BLOCK_READ : Smbus::REQUEST_READ,
                         *options.offset, size.count );
   else
      data = server.ask( options.target, Smbus::REQUEST_READ, 0, 0 );
   print( formatReading( options.target, options.offset, size, data, options.json ) );
}

void write( const Options &options ) {
   const bool block = options.size && options.size->form == Size::Form::Block;
   askBeforeWrite( options );
   ServerConnection server( options.retries );
   server.ask( options.target, block ? Smbus::REQUEST_BLOCK_WRITE : Smbus::REQUEST_WRITE,
               *options.offset, static_cast<uint32_t>( options.data.size() ), options.data );
   print( formatWritten( options.target, options.json ) );
}

void dump( const Options &options ) {
   ServerConnection server( options.retries, ServerConnection::Use::Reads );
   const Size size = options.size.value_or( Size{} );
   std::map<uint32_t, Reading> readings;
   bool any = false;
   for ( uint32_t offset = options.first; offset <= options.last; ++offset ) {
      const Reading reading = tryToRead( server, options.target, offset, size.count );
      any |= reading.error.empty();
      readings.emplace( offset, reading );
   }
   if ( !any )
      throw Failed( readings.begin()->second.error );
   print( formatDump( options.target, size, readings, options.json ) );
}

void scan( const Options &options ) {
   ServerConnection server( options.retries, ServerConnection::Use::Reads );
   std::map<uint8_t, Reading> readings;
   constexpr uint8_t first = 0x08; // the others are reserved
   constexpr uint8_t last = 0x77;
   for ( uint8_t address = first; address <= last; ++address ) {
      Target target = options.target;
      target.address = address;
      const Reading reading = tryToRead( server, target, 0, 0 );
      if ( reading.error.ends_with( Bus::noSuchBus ) )
         throw Failed( reading.error );
      readings.emplace( address, reading );
   }
   print( formatScan( options.target.bus, readings, options.json ) );
}

void sim( const Options &options ) {
   if ( !options.scenario.empty() ) {
      const Scenario scenario( options.scenario );
      ControlConnection board( controlPath( options ) );
      return scenario.play(
         [&board]( const SmbusControl::Request &request ) { return board.ask( request ); } );
   }
   ControlConnection board( controlPath( options ) );
   const SmbusControl::Response response = board.ask( options.sim );
   if ( response.has_state() )
      print( formatState( response.state(), options.json ) );
   if ( response.has_quantity() )
      print( formatQuantity( response.quantity(), options.json ) );
   if ( !response.has_state() && !response.has_quantity() )
      fmt::print( stderr, "done: {}\n", options.done );
}

void trace( const Options &options ) {
   if ( !options.recording.empty() )
      return Bus::readRecording( options.recording, [&]( const SmbusRecording::Entry &entry ) {
         print( formatEntry( entry, options.json ) );
      } );
   if ( options.past )
      return traceLast( options );
   ControlConnection board( controlPath( options ) );
   SmbusControl::Request request;
   request.set_trace( true );
   board.ask( request );
   for ( ;; ) {
      print( formatTransfer( board.receive().transfer(), options.json ) );
      std::fflush( stdout );
   }
}

void top( const Options &options ) {
   SmbusControl::Request request;
   request.set_load( true );
   ControlConnection server( controlPath( options ) );
   // Each table overwrites the one before.
   const bool redraw = isatty( STDOUT_FILENO ) && !options.json && options.count != 1;
   SmbusControl::Response before;
   for ( unsigned i = 0; options.count == 0 || i < options.count; ++i ) {
      if ( i > 0 )
         std::this_thread::sleep_for( std::chrono::duration<double>( options.interval ) );
      SmbusControl::Response now = server.ask( request );
      print( ( redraw ? "\x1b[H\x1b[J" : "" ) +
             formatLoad( before, now, options.chips, options.json ) );
      std::fflush( stdout );
      before = std::move( now );
   }
}

} // namespace SmbusClient
