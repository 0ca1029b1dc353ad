#include "orbis-smbus/SimCommands.h"

#include "commandline/WrongUsage.h"
#include "orbis-smbus/WrongCommand.h"
#include "smbus/RootBusId.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <utility>

namespace SmbusClient {

namespace {

using SmbusControl::Request;

CLI::App &addCommand( CLI::App &sim, const char *group, const std::string &name, const char *help,
                      const std::string &example ) {
   CLI::App *command = sim.add_subcommand( name, help );
   command->group( group );
   command->footer( fmt::format( "Example: orbis-smbus sim {} {}", name, example ) );
   return *command;
}

CLI::Option *addText( CLI::App &command, const char *name, const char *help,
                      const std::function<void( const std::string & )> &set ) {
   return command.add_option_function<std::string>( name, set, help )->required();
}

CLI::Validator number( double least, double most ) {
   const auto complaint = [least, most]( const std::string &text ) -> std::string {
      double value = 0;
      if ( CLI::detail::lexical_cast( text, value ) && value >= least && value <= most )
         return "";
      return fmt::format( "{} is not a number from {} to {}", text, least, most );
   };
   return CLI::Validator( complaint, fmt::format( "{} to {}", least, most ) );
}

CLI::Option *addNumber( CLI::App &command, const char *name, const char *help, uint32_t least,
                        uint32_t most, std::function<void( uint32_t )> set ) {
   return command.add_option_function<uint32_t>( name, std::move( set ), help )
      ->check( number( least, most ) )
      ->option_text( fmt::format( "{} to {}", least, most ) );
}

void describeQuantities( CLI::App &sim, Request &request ) {
   constexpr const char *group = "Quantities";
   constexpr const char *part = "A chip, or a part of it: psu1, fan3.inlet";
   constexpr const char *quantity = "A quantity of it: load, rpm";
   CLI::App &list =
      addCommand( sim, group, "list", "Print clock, modules, chips and their quantities", "" );
   list.callback( [&request] { request.set_list( true ); } );

   CLI::App &get = addCommand( sim, group, "get", "Print a quantity", "fan3.inlet rpm" );
   addText( get, "PART", part,
            [&request]( const std::string &text ) { request.mutable_get()->set_part( text ); } );
   addText( get, "QUANTITY", quantity,
            [&request]( const std::string &text ) { request.mutable_get()->set_name( text ); } );

   CLI::App &set = addCommand( sim, group, "set", "Set a quantity", "psu1 load 30" );
   addText( set, "PART", part, [&request]( const std::string &text ) {
      request.mutable_set()->mutable_name()->set_part( text );
   } );
   addText( set, "QUANTITY", quantity, [&request]( const std::string &text ) {
      request.mutable_set()->mutable_name()->set_name( text );
   } );
   set.add_option_function<double>(
         "VALUE", [&request]( double value ) { request.mutable_set()->set_value( value ); },
         "The new value, in the unit that list shows; 0 or 1 for a switch" )
      ->required()
      ->check( number( -1e9, 1e9 ) );
}

void describeModules( CLI::App &sim, Request &request ) {
   constexpr const char *group = "Modules and rotors";
   constexpr const char *module = "A power supply, fan module or transceiver: psu2, fan1, qsfp1";
   addText( addCommand( sim, group, "pull", "Pull a module out of the board", "psu2" ), "MODULE",
            module, [&request]( const std::string &text ) { request.set_pull( text ); } );
   addText( addCommand( sim, group, "insert", "Insert a module", "psu2" ), "MODULE", module,
            [&request]( const std::string &text ) { request.set_insert( text ); } );
   const auto addRotor = [&]( const char *name, const char *help, bool stalled ) {
      addText( addCommand( sim, group, name, help, "fan3.inlet" ), "ROTOR",
               "A rotor: fan3.inlet, psu1.fan2", [&request, stalled]( const std::string &text ) {
                  SmbusControl::Set &set = *request.mutable_set();
                  set.mutable_name()->set_part( text );
                  set.mutable_name()->set_name( "stalled" );
                  set.set_value( stalled );
               } );
   };
   addRotor( "stall", "Stop a rotor, whatever drives it", true );
   addRotor( "free", "Let a stalled rotor turn again", false );
}

CLI::App &addFault( CLI::App &sim, Request &request, const char *name, const char *help,
                    const std::string &example ) {
   CLI::App &command = addCommand( sim, "Faults of a chip", name, help, example );
   addText( command, "CHIP", "A chip, by the name that list shows",
            [&request]( const std::string &text ) { request.mutable_fault()->set_chip( text ); } );
   return command;
}

// "1/50": the first number of transfers out of each second number.
std::optional<std::pair<uint32_t, uint32_t>> parseShare( std::string_view text ) {
   const size_t slash = std::min( text.find( '/' ), text.size() );
   const auto nacks = Bus::parseNumber( text.substr( 0, slash ), UINT32_MAX );
   const auto outOf =
      Bus::parseNumber( text.substr( std::min( slash + 1, text.size() ) ), UINT32_MAX );
   if ( !nacks || !outOf || *outOf == 0 || *nacks > *outOf )
      return {};
   return std::pair( *nacks, *outOf );
}

void describeNack( CLI::App &sim, Request &request ) {
   CLI::App &nack = addFault( sim, request, "nack", "The chip does not acknowledge its address",
                              "temp-rear 1/50" );
   const CLI::Validator share(
      []( const std::string &text ) {
         return parseShare( text ) ? "" : text + " is not N/M with N at most M, for example 1/50";
      },
      "N/M" );
   nack
      .add_option_function<std::string>(
         "N/M",
         [&request]( const std::string &text ) {
            const auto [nacks, outOf] = *parseShare( text );
            request.mutable_fault()->set_nacks( nacks );
            request.mutable_fault()->set_out_of( outOf );
         },
         "Only in the first N of every M transfers; without it in all" )
      ->check( share )
      ->option_text( " " );
   nack.callback( [&request] {
      if ( !request.fault().has_nacks() )
         request.mutable_fault()->set_nacks( 1 );
   } );
}

void describeModuleFaults( CLI::App &sim, Request &request ) {
   addFault( sim, request, "bad-checksum", "The checksums of a module are wrong", "sfp1-eeprom" )
      .callback( [&request] { request.mutable_fault()->set_bad_checksum( true ); } );
   addNumber( addFault( sim, request, "stuck-page", "A module shows this page, and says so",
                        "qsfp1-eeprom 3" ),
              "PAGE", "The page, whichever is chosen", 0, 255,
              [&request]( uint32_t page ) { request.mutable_fault()->set_stuck_page( page ); } )
      ->required();
   addNumber( addFault( sim, request, "wrong-page",
                        "A module shows this page as if it were the chosen one", "qsfp1-eeprom 3" ),
              "PAGE", "The page, whichever is chosen", 0, 255,
              [&request]( uint32_t page ) { request.mutable_fault()->set_wrong_page( page ); } )
      ->required();
   addNumber( addFault( sim, request, "busy", "A module does not acknowledge for some time",
                        "sfp1-eeprom 500" ),
              "MS", "Milliseconds of the simulation from now on", 0, 60000,
              [&request]( uint32_t ms ) { request.mutable_fault()->set_busy_ms( ms ); } )
      ->required();
}

void describeStuck( CLI::App &sim, Request &request ) {
   static const std::map<std::string, SmbusControl::Stuck> untils{
      { "ever", SmbusControl::FOR_EVER },
      { "clocks", SmbusControl::UNTIL_CLOCKS },
      { "reset", SmbusControl::UNTIL_RESET }
   };
   CLI::App &stuck =
      addFault( sim, request, "stuck", "The chip holds the data line low", "psu2-fru clocks" );
   stuck
      .add_option_function<std::string>(
         "UNTIL",
         [&request]( const std::string &text ) {
            request.mutable_fault()->set_stuck( untils.at( text ) );
         },
         "clocks: until it gets nine clocks; reset: until a multiplexer before it is reset; ever: "
         "until clear, as without it" )
      ->check( CLI::IsMember( untils ) )
      ->option_text( "clocks, reset or ever" );
   stuck.callback( [&request] {
      if ( !request.fault().has_stuck() )
         request.mutable_fault()->set_stuck( SmbusControl::FOR_EVER );
   } );
}

void describeFaults( CLI::App &sim, Request &request ) {
   describeNack( sim, request );
   addFault( sim, request, "bad-pec", "Packet error codes are wrong, both ways", "psu1" )
      .callback( [&request] { request.mutable_fault()->set_bad_pec( true ); } );
   describeStuck( sim, request );
   addNumber( addFault( sim, request, "slow", "The chip stretches the clock", "psu1 400" ), "MS",
              "Milliseconds in each transfer", 0, 60000,
              [&request]( uint32_t ms ) { request.mutable_fault()->set_slow_ms( ms ); } )
      ->required();
   addNumber( addFault( sim, request, "block-count", "Block reads return a wrong count", "psu1 3" ),
              "COUNT", "The count that the chip sends", 0, 255,
              [&request]( uint32_t count ) { request.mutable_fault()->set_block_count( count ); } )
      ->required();
   addNumber( addFault( sim, request, "answer-size", "Reads return a wrong number of bytes",
                        "temp-rear 1" ),
              "BYTES", "How many bytes come back, whatever the length of the request", 0, 8192,
              [&request]( uint32_t size ) { request.mutable_fault()->set_answer_size( size ); } )
      ->required();
   CLI::App &corrupt =
      addFault( sim, request, "corrupt", "One register reads wrong", "temp-rear 0 0x20" );
   addNumber( corrupt, "REGISTER", "The register", 0, UINT32_MAX, [&request]( uint32_t number ) {
      request.mutable_fault()->mutable_corruption()->set_register_( number );
   } )->required();
   addNumber( corrupt, "MASK", "The bits of its first byte to invert; 0xff without it", 1, 255,
              [&request]( uint32_t mask ) {
                 request.mutable_fault()->mutable_corruption()->set_mask( mask );
              } );
   corrupt.callback( [&request] {
      SmbusControl::Corruption &corruption = *request.mutable_fault()->mutable_corruption();
      if ( corruption.mask() == 0 )
         corruption.set_mask( 0xFF );
   } );
   addFault( sim, request, "all-ones", "Each byte that the chip sends is 0xff", "temp-rear" )
      .callback( [&request] { request.mutable_fault()->set_all_ones( true ); } );
   describeModuleFaults( sim, request );
   addText(
      addCommand( sim, "Faults of a chip", "clear", "Remove all faults of a chip", "temp-rear" ),
      "CHIP", "A chip, by the name that list shows",
      [&request]( const std::string &text ) { request.set_clear_faults( text ); } );
}

void describeClockAndPower( CLI::App &sim, Request &request ) {
   constexpr const char *group = "Clock and power";
   constexpr double year = 365 * 86400; // seconds
   addCommand( sim, group, "step", "Move the simulation's clock forward", "60" )
      .add_option_function<double>(
         "SECONDS", [&request]( double seconds ) { request.set_step( seconds ); },
         "By this time, at most a year" )
      ->required()
      ->check( number( 0, year ) )
      ->option_text( "0 to 31536000" );
   addCommand( sim, group, "speed", "Set the speed of the simulation's clock", "60" )
      .add_option_function<double>(
         "N", [&request]( double speed ) { request.set_speed( speed ); },
         "Seconds of the simulation in a real second; at 0 only step moves the clock" )
      ->required()
      ->check( number( 0, 1e6 ) )
      ->option_text( "0 to 1000000" );
   addText( addCommand( sim, group, "power", "Switch the board's power", "cycle" ), "STATE",
            "off: no chip answers; on: every chip starts as after power-on; cycle: both",
            [&request]( const std::string &text ) {
               request.set_power( text == "on"    ? SmbusControl::ON
                                  : text == "off" ? SmbusControl::OFF
                                                  : SmbusControl::CYCLE );
            } )
      ->check( CLI::IsMember( { "on", "off", "cycle" } ) )
      ->option_text( "on, off or cycle" );
}

} // namespace

void describeSimCommands( CLI::App &sim, Request &request ) {
   sim.require_subcommand( 1 );
   describeQuantities( sim, request );
   describeModules( sim, request );
   describeFaults( sim, request );
   describeClockAndPower( sim, request );
}

Request parseSimCommand( std::vector<std::string> words ) {
   CLI::App app;
   app.set_help_flag(); // none
   Request request;
   describeSimCommands( app, request );
   std::reverse( words.begin(), words.end() ); // CLI11 takes them from the end
   try {
      app.parse( std::move( words ) );
   } catch ( const CLI::ParseError &error ) {
      throw WrongCommand( CommandLine::explain( app, error ) );
   }
   return request;
}

} // namespace SmbusClient
