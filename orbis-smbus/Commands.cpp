#include "orbis-smbus/Commands.h"

#include "orbis-smbus/ControlConversation.h"
#include "orbis-smbus/Conversation.h"
#include "orbis-smbus/Output.h"
#include "orbis-smbus/RecordingOutput.h"
#include "orbis-smbus/Scenario.h"
#include "orbis-smbus/SimOutput.h"
#include "orbis-smbus/SimWords.h"
#include "smbus/RecordingFile.h"
#include "smbus/RootBus.h"

#include <CLI/Error.hpp>
#include <fmt/format.h>

#include <cstdio>
#include <cstdlib>
#include <map>

namespace SmbusClient {

namespace {

void print( const std::string &text ) { std::fputs( text.c_str(), stdout ); }

// The values' bytes in the form that was asked for.
std::string bytesToWrite( const Options &options ) {
   const Size size = options.size.value_or( Size{} );
   const bool word = size.form == Size::Form::Word;
   std::string data;
   for ( const uint32_t value : options.values ) {
      if ( value > ( word ? 0xFFFFu : 0xFFu ) )
         throw CLI::ValidationError( fmt::format( "{:#x} is too large for the size", value ) );
      data += static_cast<char>( value );
      if ( word )
         data += static_cast<char>( value >> 8 );
   }
   if ( size.form == Size::Form::Block ) {
      if ( data.empty() || data.size() > 255 )
         throw CLI::ValidationError( "a block has 1 to 255 bytes" );
   } else if ( options.size && data.size() != size.count ) {
      throw CLI::ValidationError(
         fmt::format( "{} bytes of values, where the size is {}", data.size(), size.count ) );
   }
   return data;
}

Reading tryToRead( Conversation &server, const Target &target, uint32_t offset, uint32_t length ) {
   try {
      return { server.ask( target, Smbus::REQUEST_READ, offset, length ), {} };
   } catch ( const Failed &failure ) {
      return { {}, failure.what() };
   }
}

std::string controlPath( const Options &options ) {
   if ( !options.control.empty() )
      return options.control;
   const char *told = std::getenv( "ORBIS_SMBUS_SOCKET" ); // --socket has gone there
   return std::string( told && *told ? told : "/run/orbis/smbus.sock" ) + ".control";
}

} // namespace

void read( const Options &options ) {
   Conversation server( options.retries );
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
   const std::string data = bytesToWrite( options );
   const bool block = options.size && options.size->form == Size::Form::Block;
   Conversation server( options.retries );
   server.ask( options.target, block ? Smbus::REQUEST_BLOCK_WRITE : Smbus::REQUEST_WRITE,
               *options.offset, static_cast<uint32_t>( data.size() ), data );
   print( formatWritten( options.target, options.json ) );
}

void dump( const Options &options ) {
   Conversation server( options.retries );
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
   Conversation server( options.retries );
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
   if ( options.words.front() == "play" ) {
      if ( options.words.size() != 2 )
         throw NoCommand( "play takes a file" );
      const Scenario scenario( options.words[1] );
      ControlConversation bench( controlPath( options ) );
      return scenario.play( bench );
   }
   const SmbusControl::Request request = parseSim( options.words );
   ControlConversation bench( controlPath( options ) );
   const SmbusControl::Response response = bench.ask( request );
   if ( response.has_state() )
      print( formatState( response.state(), options.json ) );
   if ( response.has_quantity() )
      print( formatQuantity( response.quantity(), options.json ) );
}

void trace( const Options &options ) {
   if ( !options.recording.empty() )
      return Bus::readRecording( options.recording, [&]( const SmbusRecording::Entry &entry ) {
         print( formatEntry( entry, options.json ) );
      } );
   ControlConversation bench( controlPath( options ) );
   SmbusControl::Request request;
   request.set_trace( true );
   bench.ask( request );
   for ( ;; ) {
      print( formatTransfer( bench.receive().transfer(), options.json ) );
      std::fflush( stdout );
   }
}

} // namespace SmbusClient
