#include "orbis-smbus/CommandLine.h"

#include "orbis-smbus/SimWords.h"

#include <CLI/CLI.hpp>

namespace SmbusClient {

namespace {

// Turns a text that a parser has no value for into CLI11's own complaint.
template <typename Value>
Value accepted( std::optional<Value> value, const std::string &what ) {
   if ( !value )
      throw CLI::ValidationError( what );
   return *value;
}

void addPec( CLI::App &command, Options &options ) {
   command.add_flag( "--pec", options.target.pec, "With a packet error code" );
}

void addAddress( CLI::App &command, Options &options ) {
   command
      .add_option_function<std::string>(
         "ADDRESS",
         [&options]( const std::string &text ) {
            const Target parsed = accepted( parseTarget( text ), "not an address: " + text );
            options.target.bus = parsed.bus;
            options.target.address = parsed.address;
         },
         "Bus and chip: i2c:0:0x48, scd(4):1:2:0x48, celestica:1:2:0x48, ioport:0:0x10, "
         "sim:0:0x48" )
      ->required();
}

void addSize( CLI::App &command, Options &options, const char *help ) {
   command.add_option_function<std::string>(
      "--size",
      [&options]( const std::string &text ) {
         options.size = accepted( parseSize( text ), "not a size: " + text );
      },
      help );
}

void describeRead( CLI::App &app, Options &options ) {
   auto *command = app.add_subcommand( "read", "Read a register; without one, receive a byte" );
   addAddress( *command, options );
   command->add_option( "REGISTER", options.offset, "Register, or command code" );
   addSize( *command, options,
            "byte (default), word (low byte first), block, or a number of bytes" );
   addPec( *command, options );
}

void describeWrite( CLI::App &app, Options &options ) {
   auto *command = app.add_subcommand(
      "write", "Write bytes to a register; without any, send the register as a byte" );
   addAddress( *command, options );
   command->add_option( "REGISTER", options.offset, "Register, or command code" )->required();
   command->add_option( "VALUE", options.values, "Bytes, or a word with --size word" );
   addSize( *command, options, "byte, word (low byte first), block, or a number of bytes" );
   addPec( *command, options );
}

void describeDump( CLI::App &app, Options &options ) {
   auto *command = app.add_subcommand( "dump", "Read a range of registers, one after another" );
   addAddress( *command, options );
   command->add_option( "--first", options.first, "First register" )->capture_default_str();
   command->add_option( "--last", options.last, "Last register" )
      ->check( CLI::Range( 0, 0xFFFF ) )
      ->capture_default_str();
   addSize( *command, options, "byte (default) or word" );
   addPec( *command, options );
   command->callback( [&options] {
      const Size size = options.size.value_or( Size{} );
      if ( size.form != Size::Form::Word && size.count != 1 )
         throw CLI::ValidationError( "dump reads bytes or words" );
      if ( options.first > options.last )
         throw CLI::ValidationError( "the first register is behind the last" );
   } );
}

void describeScan( CLI::App &app, Options &options ) {
   auto *command = app.add_subcommand( "scan", "Show which addresses of a bus answer" );
   command
      ->add_option_function<std::string>(
         "BUS",
         [&options]( const std::string &text ) {
            options.target.bus = accepted( Bus::parseRootBusId( text ), "not a bus: " + text );
         },
         "Like an address, without the chip: i2c:0, scd(4):1:2" )
      ->required();
}

void describeSimulation( CLI::App &app, Options &options ) {
   auto *sim = app.add_subcommand( "sim", "Drive the bench's side of a simulated board" );
   sim->add_option( "COMMAND", options.words, "A command and its words" )->required();
   sim->footer( std::string( "Commands:\n" ) + simCommands );
   auto *trace = app.add_subcommand(
      "trace", "Print every transfer of a simulated board as it passes, until Ctrl-C; or what a "
               "recording holds" );
   trace->add_option( "FILE", options.recording, "A recording of orbis-smbusd --record" );
   for ( auto *command : { sim, trace } )
      command->add_option( "--control", options.control,
                           "The control socket, instead of the server's with .control behind it" );
}

} // namespace

void describe( CLI::App &app, Options &options ) {
   app.set_version_flag( "--version", "orbis-smbus " ORBIS_VERSION );
   app.fallthrough();
   app.require_subcommand( 1 );
   app.add_option( "--socket", options.socket,
                   "The server's socket, instead of $ORBIS_SMBUS_SOCKET or /run/orbis/smbus.sock" );
   app.add_flag( "--json", options.json, "Print one JSON object on one line" );
   app.add_option( "--retries", options.retries, "Further tries of every transfer" );
   app.add_option_function<std::vector<std::string>>(
         "--via",
         [&options]( const std::vector<std::string> &texts ) {
            for ( const std::string &text : texts )
               options.target.vias.push_back(
                  accepted( parseVia( text ), "not a multiplexer: " + text ) );
         },
         "A multiplexer on the way, as 0x70=1: the byte 1 opens it, 0 closes it afterwards. "
         "Repeated for several, the outermost first" )
      ->allow_extra_args( false );
   describeRead( app, options );
   describeWrite( app, options );
   describeDump( app, options );
   describeScan( app, options );
   describeSimulation( app, options );
   app.footer(
      "Exit codes: 0 done, 1 a transfer failed, 2 wrong usage, 3 the server can't be asked." );
}

} // namespace SmbusClient
