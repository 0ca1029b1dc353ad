#include "host/commands/CommandLine.h"

#include "commandline/WrongUsage.h"
#include "host/Times.h"
#include "host/plugin/Action.h"

#include <CLI/CLI.hpp>
#include <fmt/ranges.h>

namespace Host {
namespace {

namespace fs = std::filesystem;

constexpr auto programDescription =
   "Brings a board up with its driver plug-in, and shows it.\n\n"
   "All commands except check write to the board: bringing it up sets the thresholds of\n"
   "temperature sensors, the port LEDs, and the pin directions of expanders.\n";

constexpr auto footer =
   "\nWithout BOARD, or --board for why, module, acknowledge, fan, led, xcvr, gpio, smbus and\n"
   "system, the board is that of ORBIS_BOARD.\n"
   "led NAME beacon runs until Ctrl-C, because the program itself makes the LED blink.\n"
   "\nIf serve runs for the board, the other commands send their requests to it; -v shows this.\n"
   "The socket of serve is ORBIS_HOST_SOCKET, or /run/orbis/host.sock.\n"
   "\nBOARD is a folder with topology.json and objects.json. The rules for the arguments of the\n"
   "plug-in's drivers are in PLUGIN.drivers.json, beside that folder.\n"
   "\nwatch and serve retry what fails after 1 s, then after twice as long each time, up to 60 s.\n"
   "show tries an object that ends the plug-in's process up to four times, and ends after 30 s at\n"
   "the latest.\n"
   "\nExit codes: 0 success; 1 something can't be read or done; 2 wrong usage; 3 errors in the\n"
   "board's files; 4 the plug-in can't be loaded; 5 its process can't be run, or serve can't\n"
   "listen at its socket. Those of health are told there.\n"
   "\nEnvironment: ORBIS_BOARD, ORBIS_HOST_EVENTS, ORBIS_HOST_SOCKET, ORBIS_PLUGIN,\n"
   "ORBIS_SMBUS_SOCKET, ORBIS_SMBUS_TIMEOUT_MS.\n";

// The plug-in in ../lib beside the program, if it is there. Else the loader searches for it.
std::string defaultPlugin() {
   std::error_code failure;
   const fs::path program = fs::read_symlink( "/proc/self/exe", failure );
   const fs::path beside =
      ( program.parent_path() / ".." / "lib" / ORBIS_DEFAULT_PLUGIN ).lexically_normal();
   return fs::exists( beside, failure ) ? beside.string() : ORBIS_DEFAULT_PLUGIN;
}

// Not done by CLI11: it reads the environment for every sub-command, and would replace the board of
// another sub-command.
void boardFromEnvironment( Options &options, const char *argument ) {
   if ( !options.board.empty() )
      return;
   const char *named = std::getenv( "ORBIS_BOARD" );
   if ( !named || !*named )
      throw CLI::RequiredError( fmt::format( "{} or ORBIS_BOARD", argument ) );
   if ( const std::string why = CLI::ExistingDirectory( named ); !why.empty() )
      throw CLI::ValidationError( "ORBIS_BOARD", why );
   options.board = named;
}

CLI::App *addBoardCommand( CLI::App &app, Options &options, Options::Command command,
                           const char *name, const char *what ) {
   CLI::App *sub = app.add_subcommand( name, what );
   sub->fallthrough();
   sub->add_option( "BOARD", options.board, "The board's folder; without this ORBIS_BOARD" )
      ->check( CLI::ExistingDirectory );
   sub->callback( [&options, command] {
      boardFromEnvironment( options, "BOARD" );
      options.command = command;
   } );
   return sub;
}

void addBoard( CLI::App &sub, Options &options ) {
   sub.add_option( "--board", options.board, "The board's folder; without this ORBIS_BOARD" )
      ->check( CLI::ExistingDirectory );
}

// A sub-command for the actions of a kind.
void addAction( CLI::App &app, Options &options, BoardFiles::Kind kind, const char *what ) {
   CLI::App *sub = app.add_subcommand( std::string( nameOf( kind ) ), what );
   sub->fallthrough();
   sub->footer( fmt::format( "{}", fmt::join( usageOf( kind ), "\n" ) ) );
   addBoard( *sub, options );
   if ( kind == BoardFiles::Kind::System )
      sub->add_flag( "-y,--yes", options.yes, "Cut power without a question" );
   else
      sub->add_option( "NAME", options.object, "The object's name" )->required();
   sub->add_option( "WORDS", options.words, "The action" )->required();
   sub->callback( [&options, kind] {
      boardFromEnvironment( options, "--board" );
      options.command = Options::Command::Act;
      options.kind = kind;
   } );
}

void addWhy( CLI::App &app, Options &options ) {
   CLI::App *sub = app.add_subcommand(
      "why", "Tell all of one object: where it is, its values, what explains it, its neighbours,\n"
             "its last transfers and events, and what its chip's registers hold" );
   sub->fallthrough();
   addBoard( *sub, options );
   sub->add_option( "OBJECT", options.object, "The object's name" )->required();
   sub->add_flag( "--json", options.json, "Print JSON; its schema is boards/why.schema.json" );
   sub->callback( [&options] {
      boardFromEnvironment( options, "--board" );
      options.command = Options::Command::Why;
   } );
}

void addModule( CLI::App &app, Options &options ) {
   const std::map<std::string, Optics::Standard> standards{ { "8472", Optics::Standard::Sff8472 },
                                                            { "8636", Optics::Standard::Sff8636 },
                                                            { "cmis", Optics::Standard::Cmis } };
   CLI::App *sub = app.add_subcommand(
      "module", "Tell all that the module in a cage says of itself: identity, monitors,\n"
                "thresholds and flags; or what the bytes in a file say" );
   sub->fallthrough();
   addBoard( *sub, options );
   CLI::Option *cage = sub->add_option( "CAGE", options.object, "The cage's name" );
   CLI::Option *file = sub->add_option( "--file", options.image, "Decode the bytes in this file" )
                          ->check( CLI::ExistingFile )
                          ->excludes( cage );
   sub->add_option_function<std::string>(
         "--standard",
         [&options, standards]( const std::string &name ) {
            options.standard = standards.at( name );
         },
         "Of the file: 8472, 8636 or cmis; without this its first byte tells it" )
      ->check( CLI::IsMember( std::vector<std::string>{ "8472", "8636", "cmis" } ) )
      ->needs( file );
   CLI::Option *json = sub->add_flag(
      "--json", options.json,
      "Print JSON; its schema is the definition \"module\" of boards/modules.schema.json" );
   CLI::Option *raw =
      sub->add_flag( "--raw", options.raw, "Print the bytes as they are, as --file takes them" );
   sub->add_flag( "--hex", options.hex, "Print the bytes in hexadecimal" )
      ->excludes( json )
      ->excludes( raw );
   raw->excludes( json );
   sub->callback( [&options] {
      if ( options.object.empty() && options.image.empty() )
         throw CLI::RequiredError( "CAGE or --file" );
      if ( options.image.empty() )
         boardFromEnvironment( options, "--board" );
      options.command = Options::Command::Module;
   } );
}

// Where serve listens besides its Unix socket.
void addHttp( CLI::App &serve, Options &options ) {
   serve.add_option( "--http", options.http,
                     "ADDRESS:PORT: answer there, too, as 127.0.0.1:8080, where a browser finds a "
                     "page; only for this machine, and only reading" );
   serve.add_flag( "--http-any-address", options.httpAnyAddress,
                   "That address may be reached from other machines; nothing is encrypted" );
   serve.add_option( "--http-control", options.httpControl,
                     "FILE: who has the token that is its first line may act there, too" );
   serve.add_option( "--control-group", options.controlGroup,
                     "GROUP: its members may act at the Unix socket, beside root and the user of "
                     "serve; others may read" );
}

// The command, and the journal's file for it and serve.
void addEvents( CLI::App &app, Options &options, CLI::App &serve ) {
   CLI::App *events = addBoardCommand( app, options, Options::Command::Events, "events",
                                       "Print what has happened to the board: from serve, or from "
                                       "its journal" );
   events->add_option( "--since", options.since, fmt::format( "Only since then: {}", sinceForms ) )
      ->check( []( const std::string &text ) {
         const auto now =
            std::chrono::floor<std::chrono::milliseconds>( std::chrono::system_clock::now() );
         return sinceOf( text, now ) ? "" : fmt::format( "{} is not {}", text, sinceForms );
      } );
   events->add_option( "--object", options.object, "Only about this object" );
   events->add_flag( "--json", options.json, "Print JSON: an object for each event, on one line" );
   events->add_flag( "-f,--follow", options.follow,
                     "Then print events as they come, until Ctrl-C" );
   for ( CLI::App *sub : { events, &serve } )
      sub->add_option( "--events", options.events,
                       "The journal's file; without this host.events beside the socket" )
         ->envname( "ORBIS_HOST_EVENTS" );
}

void addAcknowledge( CLI::App &app, Options &options ) {
   CLI::App *sub = app.add_subcommand(
      "acknowledge", "Tell serve that a person has seen what is wrong, by its cause" );
   sub->fallthrough();
   addBoard( *sub, options );
   CLI::Option *causes =
      sub->add_option( "CAUSE", options.words, "A cause that events prints" )->expected( 0, -1 );
   sub->add_flag( "--all", options.all, "Every cause that is there" )->excludes( causes );
   sub->callback( [&options] {
      if ( options.words.empty() && !options.all )
         throw CLI::RequiredError( "CAUSE or --all" );
      boardFromEnvironment( options, "--board" );
      options.command = Options::Command::Acknowledge;
   } );
}

// "psu=5": seconds between two readings of objects of this kind. Returns an error text.
std::string parsePeriod( const std::string &text, std::map<BoardFiles::Kind, double> &periods ) {
   const auto equals = text.find( '=' );
   const auto kind = BoardFiles::kindOf( text.substr( 0, equals ) );
   double seconds = 0;
   if ( !kind || equals == std::string::npos ||
        !CLI::detail::lexical_cast( text.substr( equals + 1 ), seconds ) || !( seconds >= 0.1 ) ||
        seconds > 3600 )
      return "\"" + text + "\" is not KIND=SECONDS, from 0.1 to 3600";
   periods[*kind] = seconds;
   return {};
}

} // namespace

Options parseCommandLine( int argc, char **argv, int &exitCode ) {
   using enum Options::Command;
   Options options;
   options.plugin = defaultPlugin();
   CLI::App app( programDescription, "orbis-host" );
   app.footer( footer );
   app.set_version_flag( "-V,--version", "orbis-host " ORBIS_VERSION );
   app.require_subcommand( 1 );
   app.option_defaults()->take_last();
   app.add_option( "--plugin", options.plugin, "The driver plug-in" )
      ->envname( "ORBIS_PLUGIN" )
      ->capture_default_str();
   app.add_option( "--drivers", options.drivers, "The plug-in's data file" )
      ->check( CLI::ExistingFile );
   app.add_option( "-t,--trace-level", options.traceLevel,
                   "Print the plug-in's traces up to this level, 0 to 7" )
      ->check( CLI::Range( 0, 7 ) );
   app.add_flag( "-v,--verbose", options.verbose, "Log what happens to the plug-in's process" );
   app.add_option( "--limit", options.limit,
                   "Seconds for one operation; after that the plug-in's process is ended" )
      ->check( CLI::Range( 0.1, 3600.0 ) )
      ->capture_default_str();
   CLI::App *check =
      addBoardCommand( app, options, Check, "check",
                       "Check all files of a board, simulation.json too; and tell how busy its "
                       "busses are" );
   check->add_flag( "--json", options.json, "Print JSON: what is found, and the busses" );
   check->add_flag( "--strict", options.strict, "End with an error after a warning, too" );
   addBoardCommand( app, options, Show, "show", "Show every object once" )
      ->add_flag( "--json", options.json, "Print JSON; its schema is boards/state.schema.json" );
   CLI::App *health =
      addBoardCommand( app, options, Health, "health",
                       "Tell what is wrong with the board, and why; exit codes as those of "
                       "monitoring plugins: 0 ok, 1 warning, 2 critical, 3 unknown" );
   health->add_flag( "--brief", options.brief, "Print one line" );
   health->add_flag( "--perfdata", options.perfdata, "Add all numbers with their limits" );
   health->add_flag( "--json", options.json,
                     "Print JSON; its schema is boards/health.schema.json" );
   addWhy( app, options );
   addModule( app, options );
   addBoardCommand( app, options, Modules, "modules",
                    "Show the module in each cage: who made it, its temperature, the light that it "
                    "receives, and the worst that it warns of" )
      ->add_flag( "--json", options.json, "Print JSON; its schema is boards/modules.schema.json" );
   CLI::App *watch =
      addBoardCommand( app, options, Watch, "watch",
                       "Show what is wrong, and every object, in every period, until q or "
                       "Ctrl-C; ? for the keys" );
   watch->add_flag( "--plain", options.plain,
                    "Print tables one after the other, as where there is no terminal" );
   CLI::App *serve =
      addBoardCommand( app, options, Serve, "serve",
                       "Read the board in every period and answer HTTP, until SIGTERM or Ctrl-C" );
   for ( CLI::App *periodic : { check, watch, serve } )
      periodic->add_option( "--period", options.period, "Seconds between two readings" )
         ->check( CLI::Range( 0.1, 3600.0 ) )
         ->capture_default_str();
   serve
      ->add_option_function<std::vector<std::string>>(
         "--period-of", []( const auto & ) {},
         "KIND=SECONDS: another period for objects of this kind" )
      ->multi_option_policy( CLI::MultiOptionPolicy::TakeAll )
      ->check(
         [&options]( const std::string &text ) { return parsePeriod( text, options.periods ); } );
   addHttp( *serve, options );
   addEvents( app, options, *serve );
   addAcknowledge( app, options );
   addAction( app, options, BoardFiles::Kind::Fan, "Set a fan's speed" );
   addAction( app, options, BoardFiles::Kind::Led, "Set an LED" );
   addAction( app, options, BoardFiles::Kind::Xcvr, "Set a control line of a transceiver cage" );
   addAction( app, options, BoardFiles::Kind::Gpio, "Set, clear or read a GPIO" );
   addAction( app, options, BoardFiles::Kind::Smbus,
              "Run an SMBus operation through a proxy object" );
   addAction( app, options, BoardFiles::Kind::System, "Read the reload cause, or cut power" );
   app.add_subcommand( "child" )->group( "" )->callback( [&options] { options.command = Child; } );
   try {
      app.parse( argc, argv );
   } catch ( const CLI::ParseError &end ) {
      const int wrong = app.got_subcommand( health ) ? exitUnknown : exitUsage;
      exitCode = CommandLine::report( app, end ) ? exitOk : wrong;
      return {};
   }
   if ( options.drivers.empty() )
      options.drivers = ( options.board / ".." ).lexically_normal() /
                        fs::path( options.plugin ).stem().concat( ".drivers.json" );
   return options;
}

} // namespace Host
