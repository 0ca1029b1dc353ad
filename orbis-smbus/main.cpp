// orbis-smbus: reads and writes chips through the SMBus server, from a shell.
#include "orbis-smbus/CommandLine.h"
#include "orbis-smbus/Commands.h"
#include "orbis-smbus/Conversation.h"
#include "orbis-smbus/Output.h"
#include "orbis-smbus/SimWords.h"
#include "smbus/RecordingFile.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <map>
#include <string>

namespace {

using namespace SmbusClient;

enum ExitCode { Done = 0, TransferFailed = 1, Usage = 2, NoServer = 3 };

void carryOut( const CLI::App &app, const Options &options ) {
   const std::map<std::string, void ( * )( const Options & )> commands{
      { "read", read }, { "write", write }, { "dump", dump },
      { "scan", scan }, { "sim", sim },     { "trace", trace }
   };
   commands.at( app.get_subcommands().front()->get_name() )( options );
}

ExitCode complain( const Options &options, const std::exception &error, ExitCode code ) {
   fmt::print( "{}", formatFailure( error.what(), options.json ) );
   fmt::print( stderr, "orbis-smbus: {}\n", error.what() );
   return code;
}

} // namespace

int main( int argc, char **argv ) {
   CLI::App app( "Reads and writes chips through the SMBus server.", "orbis-smbus" );
   Options options;
   describe( app, options );
   try {
      app.parse( argc, argv );
      if ( !options.socket.empty() )
         setenv( "ORBIS_SMBUS_SOCKET", options.socket.c_str(), 1 );
      carryOut( app, options );
   } catch ( const CLI::ParseError &error ) {
      return app.exit( error ) == 0 ? Done : Usage;
   } catch ( const NoCommand &error ) {
      return complain( options, error, Usage );
   } catch ( const Bus::RecordingError &error ) {
      return complain( options, error, Usage );
   } catch ( const Failed &error ) {
      return complain( options, error, TransferFailed );
   } catch ( const Unreachable &error ) {
      return complain( options, error, NoServer );
   }
   return Done;
}
