// orbis-smbusd: carries SMBus transactions out for its clients.
#include "smbusd/CommandLine.h"
#include "smbusd/Serve.h"

#include <CLI/CLI.hpp>
#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/spdlog.h>

#include <exception>

namespace {

enum ExitCode { Done = 0, Failed = 1, Usage = 2 };

} // namespace

int main( int argc, char **argv ) {
   using namespace Smbusd;
   CLI::App app( "Carries out SMBus transactions for its clients, on real busses or on a simulated "
                 "board.",
                 "orbis-smbusd" );
   Options options;
   describe( app, options );
   try {
      app.parse( argc, argv );
      checkTogether( app, options );
   } catch ( const CLI::ParseError &error ) {
      return app.exit( error ) == 0 ? Done : Usage;
   }
   spdlog::set_default_logger( spdlog::stderr_color_mt( "orbis-smbusd" ) );
   spdlog::set_level( spdlog::level::from_str( options.logLevel ) );
   try {
      if ( !options.routesToCheck.empty() )
         return checkRoutes( options ) ? Done : Failed;
      serve( options );
   } catch ( const std::exception &error ) {
      spdlog::critical( "{}", error.what() );
      return Failed;
   }
   return Done;
}
