#include "host/commands/Commands.h"

#include "host/serve/Client.h"

#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/spdlog.h>

namespace Host {

std::filesystem::path eventsOf( const Options &options ) {
   return options.events.empty() ? serveEvents() : options.events;
}

void setUpLog( const Options &options ) {
   const auto logger = spdlog::stderr_color_st( "orbis-host" );
   logger->set_level( options.verbose ? spdlog::level::debug : spdlog::level::info );
   logger->set_pattern( "%Y-%m-%d %H:%M:%S.%e %^%l%$ %v" );
   spdlog::set_default_logger( logger );
}

Session::Handlers logging( const Options &options, std::function<void()> changed ) {
   return { .changed = std::move( changed ),
            .trace =
               [level = options.traceLevel]( const Trace &trace ) {
                  if ( trace.level <= level )
                     spdlog::info( "trace {}: {}", trace.level, printable( trace.text ) );
               },
            .notice = []( const std::string &what ) { spdlog::debug( "{}", printable( what ) ); },
            .traceLevel = options.traceLevel };
}

void warnOfFlags() {
   spdlog::warn( "no serve runs for the board: this reads the modules itself, which clears the "
                 "flags that they keep" );
}

int reportLoadFault( const Fault &fault ) {
   spdlog::error( "the plug-in can't be loaded: {}", toText( fault ) );
   return exitNoPlugin;
}

} // namespace Host
