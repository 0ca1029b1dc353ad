// orbis-smbusd: carries SMBus transactions out for its clients.
#include "smbusd/CommandLine.h"
#include "smbusd/Serve.h"
#include "smbusd/server/LogLimit.h"

#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/spdlog.h>

#include <exception>
#include <memory>

int main( int argc, char **argv ) {
   using namespace Smbusd;
   Options options;
   if ( const auto code = parseCommandLine( argc, argv, options ) )
      return *code;
   constexpr unsigned warningsPerSecond = 20;
   spdlog::set_default_logger( std::make_shared<spdlog::logger>(
      "orbis-smbusd",
      std::make_shared<LogLimit>( std::make_shared<spdlog::sinks::stderr_color_sink_mt>(),
                                  warningsPerSecond ) ) );
   spdlog::set_level( spdlog::level::from_str( options.logLevel ) );
   try {
      if ( !options.routesToCheck.empty() )
         return checkRoutes( options ) ? Done : Failed;
      if ( !options.policyToCheck.empty() )
         return checkPolicy( options ) ? Done : Failed;
      serve( options );
   } catch ( const std::exception &error ) {
      spdlog::critical( "{}", error.what() );
      return Failed;
   }
   return Done;
}
