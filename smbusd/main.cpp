// orbis-smbusd: carries SMBus transactions out for its clients.
#include "smbusd/CommandLine.h"
#include "smbusd/Serve.h"

#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/spdlog.h>

#include <exception>

int main( int argc, char **argv ) {
   using namespace Smbusd;
   Options options;
   if ( const auto code = parseCommandLine( argc, argv, options ) )
      return *code;
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
