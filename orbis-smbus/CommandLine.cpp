#include "orbis-smbus/CommandLine.h"

#include "commandline/WrongUsage.h"
#include "orbis-smbus/SimCommands.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace SmbusClient {

namespace {

template <typename Value>
Value orComplain( std::optional<Value> value, const std::string &complaint ) {
   if ( !value )
      throw CLI::ValidationError( complaint );
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
            const Target parsed =
               orComplain( parseTarget( text ), "not an address: " + text +
                                                   "; write it as i2c:0:0x48 or scd(4):1:2:0x48" );
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
         options.size = orComplain(
            parseSize( text ), "not a size: " + text + "; write byte, word, block or 1 to 8192" );
      },
      help );
}

// The values' bytes, in the form that --size gives.
std::string bytesToWrite( const std::vector<uint32_t> &values, const std::optional<Size> &asked ) {
   const Size size = asked.value_or( Size{} );
   const bool word = size.form == Size::Form::Word;
   std::string data;
   for ( const uint32_t value : values ) {
      if ( value > ( word ? 0xFFFFu : 0xFFu ) )
         throw CLI::ValidationError(
            fmt::format( "VALUE: {:#x} is too large for the size", value ) );
      data += static_cast<char>( value );
      if ( word )
         data += static_cast<char>( value >> 8 );
   }
   if ( size.form == Size::Form::Block ) {
      if ( data.empty() || data.size() > 255 )
         throw CLI::ValidationError( "VALUE: a block has 1 to 255 bytes" );
   } else if ( asked && data.size() != size.count ) {
      throw CLI::ValidationError(
         fmt::format( "VALUE: {} bytes, but --size is {}", data.size(), size.count ) );
   }
   return data;
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
   command
      ->add_option( "--board", options.board,
                    "The folder of the board's files: asks first when an object is on the chip" )
      ->envname( "ORBIS_BOARD" )
      ->option_text( "FOLDER" );
   command->add_flag( "-y,--yes", options.yes, "Don't ask" );
   command->callback( [&options] { options.data = bytesToWrite( options.values, options.size ); } );
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
         throw CLI::ValidationError( "--size: dump reads bytes or words" );
      if ( options.first > options.last )
         throw CLI::ValidationError( "--first is greater than --last" );
   } );
}

Bus::RootBusId busOrComplain( const std::string &text ) {
   return orComplain( Bus::parseRootBusId( text ),
                      "not a bus: " + text + "; write it as i2c:0 or scd(4):1:2" );
}

void describeScan( CLI::App &app, Options &options ) {
   auto *command = app.add_subcommand( "scan", "Show which addresses of a bus answer" );
   command
      ->add_option_function<std::string>(
         "BUS",
         [&options]( const std::string &text ) { options.target.bus = busOrComplain( text ); },
         "Like an address, without the chip: i2c:0, scd(4):1:2" )
      ->required();
}

void addControl( CLI::App &command, Options &options ) {
   command.add_option( "--control", options.control,
                       "The control socket; default: the server's socket with .control after its "
                       "name" );
}

void describeSim( CLI::App &app, Options &options ) {
   auto *sim = app.add_subcommand( "sim", "Control a simulated board" );
   addControl( *sim, options );
   describeSimCommands( *sim, options.sim );
   auto *play =
      sim->add_subcommand( "play", "Play a scenario: a file of commands with times and of "
                                   "expected values" );
   play->group( "Scenarios" );
   play->add_option( "FILE", options.scenario, "The scenario" )->required();
   play->footer( "Example: orbis-smbus sim play boards/kelt/scenarios/bad-day.scenario\n"
                 "Lines of a scenario:\n"
                 "   at 3s pull psu2\n"
                 "   expect fan3.inlet rpm 0 within 4s" );
   sim->footer( "Example: orbis-smbus sim nack temp-rear 1/50\n"
                "orbis-smbus sim COMMAND --help explains a command." );
}

void describeTrace( CLI::App &app, Options &options ) {
   auto *trace = app.add_subcommand(
      "trace", "Print every transfer of a simulated board, until Ctrl-C; or the last transfers of "
               "any server; or a recording" );
   auto *file =
      trace->add_option( "FILE", options.recording, "A recording of orbis-smbusd --record" );
   auto *last = trace
                   ->add_option_function<std::string>(
                      "--last",
                      [&options]( const std::string &text ) {
                         options.past = true;
                         if ( !text.empty() )
                            options.pastBus = toString( busOrComplain( text ) );
                      },
                      "Print the last transfers of this bus, or of all, and end" )
                   ->expected( 0, 1 )
                   ->default_str( "" )
                   ->option_text( "[BUS]" )
                   ->excludes( file );
   trace
      ->add_flag( "--failures", options.failures,
                  "With --last: only what led to the last failed transactions" )
      ->needs( last );
   trace
      ->add_flag( "--vcd", options.vcd,
                  "With --last: SDA and SCL as a value change dump, for wave viewers and sigrok" )
      ->needs( last );
   addControl( *trace, options );
   trace->footer( "Example: orbis-smbus trace --last 'scd(4):1:2' --vcd > bus.vcd" );
}

void describeTop( CLI::App &app, Options &options ) {
   auto *top = app.add_subcommand(
      "top", "Show how busy the server's busses are, and with what, until Ctrl-C" );
   top->add_option( "--interval", options.interval, "Seconds from one table to the next" )
      ->check( CLI::Range( 0.1, 3600.0 ) )
      ->capture_default_str();
   top->add_option( "--count", options.count,
                    "End after so many tables; the first one is of all since the server's start" )
      ->check( CLI::Range( 1u, 1'000'000u ) );
   top->add_flag( "--chips", options.chips, "With a row for each chip; JSON always has them" );
   addControl( *top, options );
}

void describe( CLI::App &app, Options &options ) {
   app.set_version_flag( "-V,--version", "orbis-smbus " ORBIS_VERSION );
   app.fallthrough();
   app.require_subcommand( 1 );
   app.add_option(
      "--socket", options.socket,
      "The server's socket; default: $ORBIS_SMBUS_SOCKET, else /run/orbis/smbus.sock" );
   app.add_flag( "--json", options.json, "Print one JSON object on one line" );
   app.add_option( "--retries", options.retries, "Further tries of every transfer" );
   app.add_option_function<std::vector<std::string>>(
         "--via",
         [&options]( const std::vector<std::string> &texts ) {
            for ( const std::string &text : texts )
               options.target.vias.push_back(
                  orComplain( Bus::parseSelection( text ),
                              "not a multiplexer: " + text + "; write it as 0x70=1" ) );
         },
         "A multiplexer before the chip, as 0x70=1: the byte 1 opens it, 0 closes it afterwards. "
         "Repeat it for several, the outermost first" )
      ->allow_extra_args( false );
   describeRead( app, options );
   describeWrite( app, options );
   describeDump( app, options );
   describeScan( app, options );
   describeSim( app, options );
   describeTrace( app, options );
   describeTop( app, options );
   app.footer( "Exit codes: 0 done, 1 a transfer failed, 2 wrong usage, 3 no connection to the "
               "server." );
}

// "pull psu2": the command with its arguments.
std::string inWords( const CLI::App &command ) {
   std::vector<std::string> words{ command.get_name() };
   for ( const CLI::Option *option : command.get_options() )
      for ( const std::string &argument : option->results() )
         words.push_back( argument );
   return fmt::format( "{}", fmt::join( words, " " ) );
}

} // namespace

std::optional<ExitCode> parseCommandLine( int argc, char **argv, Options &options ) {
   CLI::App app( "Reads and writes chips through the SMBus server.", "orbis-smbus" );
   describe( app, options );
   try {
      app.parse( argc, argv );
   } catch ( const CLI::ParseError &end ) {
      return CommandLine::report( app, end ) ? Done : WrongUsage;
   }
   const CLI::App &command = *app.get_subcommands().front();
   options.command = command.get_name();
   if ( options.command == "sim" )
      options.done = inWords( *command.get_subcommands().front() );
   return {};
}

} // namespace SmbusClient
