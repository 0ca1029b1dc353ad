// orbis-smbus: reads and writes chips through the SMBus server, from a shell.
#include "orbis-smbus/CommandLine.h"
#include "orbis-smbus/Commands.h"
#include "orbis-smbus/ControlConnection.h"
#include "orbis-smbus/Output.h"
#include "orbis-smbus/ServerConnection.h"
#include "smbus/RecordingFile.h"

#include <fmt/format.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <map>
#include <string>

namespace {

using namespace SmbusClient;

void carryOut( const Options &options ) {
   const std::map<std::string, void ( * )( const Options & )> commands{
      { "read", read }, { "write", write }, { "dump", dump }, { "scan", scan },
      { "sim", sim },   { "trace", trace }, { "top", top }
   };
   commands.at( options.command )( options );
}

ExitCode complain( const Options &options, const std::exception &error, ExitCode code ) {
   fmt::print( "{}", formatFailure( error.what(), options.json ) );
   fmt::print( stderr, "orbis-smbus: {}\n", error.what() );
   return code;
}

} // namespace

int main( int argc, char **argv ) {
   Options options;
   if ( const auto code = parseCommandLine( argc, argv, options ) )
      return *code;
   if ( !options.socket.empty() )
      setenv( "ORBIS_SMBUS_SOCKET", options.socket.c_str(), 1 );
   try {
      carryOut( options );
   } catch ( const Bus::RecordingError &error ) {
      return complain( options, error, WrongUsage );
   } catch ( const Failed &error ) {
      return complain( options, error, TransferFailed );
   } catch ( const Unreachable &error ) {
      return complain( options, error, NoServer );
   }
   return Done;
}
