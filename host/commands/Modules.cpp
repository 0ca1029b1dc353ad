#include "boardfiles/Nearest.h"
#include "host/commands/Commands.h"
#include "host/commands/ReadOnce.h"
#include "host/serve/Client.h"
#include "host/serve/ModuleJson.h"
#include "host/terminal/ModuleText.h"
#include "optics/Decode.h"
#include "optics/ImageFile.h"
#include "screen/Terminal.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fmt/ranges.h>
#include <fstream>
#include <iterator>
#include <sockets/SocketFile.h>
#include <spdlog/spdlog.h>

namespace Host {
namespace {

bool namesModules( const BoardFiles::Board &board ) {
   if ( BoardFiles::withoutModules( board ).objects.size() < board.objects.size() )
      return true;
   fmt::print( stderr, "the board {} names no \"module\" for any cage\n", board.folder );
   return false;
}

// The cage's object, by its own name or the module's.
const BoardFiles::ObjectDescription *findModule( const BoardFiles::Board &board,
                                                 const std::string &name ) {
   std::vector<std::string> cages;
   for ( const BoardFiles::ObjectDescription &object : board.objects ) {
      if ( object.kind != BoardFiles::Kind::Module )
         continue;
      if ( object.name == name || object.health.in == name )
         return &object;
      cages.push_back( object.health.in.value_or( "" ) );
   }
   if ( namesModules( board ) )
      fmt::print( stderr, "the board {} has no cage \"{}\"{}\n", board.folder, name,
                  BoardFiles::didYouMean( name, cages ) );
   return nullptr;
}

int moduleExitCode( const CageModule &module ) {
   return isBad( module.state ) || !module.module ? exitUnreadable : exitOk;
}

// An empty cage is no fault where all are shown.
bool isFault( const CageModule &module ) {
   return module.state != State::Absent && moduleExitCode( module ) != exitOk;
}

int printModule( const CageModule &module, const Options &options ) {
   if ( options.json ) {
      fmt::print( "{}\n", toJson( module ) );
   } else if ( options.raw && !module.module ) {
      fmt::print( stderr, "{}\n", fmt::join( linesOf( module, 0 ), "\n" ) );
   } else if ( options.raw ) {
      const auto bytes = Optics::fileOfImage( module.image, module.module->standard );
      std::fwrite( bytes.data(), 1, bytes.size(), stdout );
   } else if ( options.hex ) {
      for ( const std::string &line : hexLinesOf( module.image ) )
         fmt::print( "{}\n", line );
   } else {
      for ( const std::string &line : linesOf( module, Screen::Terminal::width().value_or( 0 ) ) )
         fmt::print( "{}\n", line );
   }
   return moduleExitCode( module );
}

// A serve that has no time now reads the modules all the same. Another reader would take the flags
// away from it.
bool isSilent( const BoardFiles::Board &board ) {
   const std::filesystem::path socket = serveSocket();
   const int error = Sockets::tryToConnect( socket.string() );
   if ( ( error != 0 && error != EAGAIN ) || Client( socket ).report() )
      return false;
   spdlog::error( "the serve at {} doesn't answer; the modules of {} are not read beside it",
                  socket.string(), board.folder );
   return true;
}

// Nothing, and the exit code, when the plug-in can't be loaded.
std::optional<std::vector<CageModule>> readHere( const BoardFiles::Board &board,
                                                 const std::string &cage, const Options &options,
                                                 int &exitCode ) {
   if ( isSilent( board ) ) {
      exitCode = exitUnreadable;
      return {};
   }
   warnOfFlags();
   const BoardOnce once = readModulesOnce( board, cage, options );
   if ( once.loadFault ) {
      exitCode = reportLoadFault( *once.loadFault );
      return {};
   }
   if ( once.gaveUp )
      spdlog::error( "gave up after {} s", totalLimit.count() );
   return once.modules;
}

} // namespace

int moduleOfFile( const Options &options ) {
   std::ifstream stream( options.image, std::ios::binary );
   const std::vector<char> text{ std::istreambuf_iterator<char>( stream ), {} };
   if ( !stream ) {
      fmt::print( stderr, "{} can't be read\n", options.image.string() );
      return exitUsage;
   }
   const std::vector<uint8_t> bytes( text.begin(), text.end() );
   CageModule module;
   try {
      module.image = Optics::imageOfFile( bytes, options.standard );
   } catch ( const std::runtime_error &error ) {
      fmt::print( stderr, "{}: {}\n", options.image.string(), error.what() );
      return exitUsage;
   }
   decode( module, options.standard );
   return printModule( module, options );
}

int module( const BoardFiles::Board &board, const Options &options ) {
   const BoardFiles::ObjectDescription *object = findModule( board, options.object );
   if ( !object )
      return exitUsage;
   const std::string cage = object->health.in.value_or( "" );
   if ( const auto client = Client::ofBoard( board.folder ) )
      if ( const auto known = client->module( cage ) ) {
         spdlog::debug( "asks the serve at {}", client->socket().string() );
         return printModule( *known, options );
      }
   int exitCode = exitOk;
   const auto modules = readHere( board, cage, options, exitCode );
   return modules ? printModule( modules->front(), options ) : exitCode;
}

int modules( const BoardFiles::Board &board, const Options &options ) {
   if ( !namesModules( board ) )
      return exitUsage;
   std::optional<std::vector<CageModule>> known;
   if ( const auto client = Client::ofBoard( board.folder ) )
      known = client->modules();
   int exitCode = exitOk;
   if ( !known )
      known = readHere( board, "", options, exitCode );
   if ( !known )
      return exitCode;
   if ( options.json )
      fmt::print( "{}\n", toJson( serveName( board.folder ), *known ) );
   else
      fmt::print( "{}\n",
                  fmt::join( tableOf( *known, Screen::Terminal::width().value_or( 0 ) ), "\n" ) );
   return std::any_of( known->begin(), known->end(), isFault ) ? exitUnreadable : exitOk;
}

} // namespace Host
