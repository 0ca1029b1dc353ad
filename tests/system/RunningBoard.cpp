#include "RunningBoard.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <thread>

using TestSupport::StartedProgram;

RunningBoard::RunningBoard( const std::string &name, std::vector<std::string> server )
   : board_( BOARDS "/" + name ), serverWords_( std::move( server ) ) {
   startServer();
}

RunningBoard::RunningBoard( const std::string &topology, const std::string &objects,
                            const std::string &simulation )
   : board_( folder_.file( "board" ) ) {
   std::filesystem::create_directory( board_ );
   folder_.write( "board/topology.json", topology );
   folder_.write( "board/objects.json", objects );
   folder_.write( "board/simulation.json", simulation );
   // The list of the drivers' arguments is in the folder above the board.
   std::filesystem::copy( BOARDS "/libOrbisDriversKelt.drivers.json",
                          folder_.file( "libOrbisDriversKelt.drivers.json" ) );
   startServer();
}

void RunningBoard::startServer() {
   setenv( "ORBIS_SMBUS_SOCKET", socket_.c_str(), 1 );
   setenv( "ORBIS_HOST_SOCKET", folder_.file( "host.sock" ).c_str(), 1 );
   std::vector<std::string> command = { ORBIS_SMBUSD, "--simulate", board_ + "/topology.json",
                                        "--simulation", board_ + "/simulation.json" };
   command.insert( command.end(), serverWords_.begin(), serverWords_.end() );
   server_ = start( command, "server" );
   folder_.waitFor( "server", "serving" );
}

void RunningBoard::killServer() {
   server_->signal( SIGKILL );
   server_->wait();
}

int RunningBoard::stopServer() {
   server_->signal( SIGTERM );
   return server_->wait();
}

Shown RunningBoard::show() { return showBoard( board_, socket_ ); }

Ran RunningBoard::host( const std::vector<std::string> &words ) {
   std::vector<std::string> command = { ORBIS_HOST };
   command.insert( command.end(), words.begin(), words.end() );
   if ( words.size() > 1 && !words[1].starts_with( "--" ) )
      command.push_back( "--board" );
   command.push_back( board_ );
   StartedProgram host( command );
   const int exitCode = host.wait();
   return { exitCode, host.output(), host.errors() };
}

std::unique_ptr<StartedProgram> RunningBoard::start( const std::vector<std::string> &command,
                                                     const std::string &file ) {
   return std::make_unique<StartedProgram>(
      command, TestSupport::ProgramSettings{ .outputFile = folder_.file( file ),
                                             .errorFile = folder_.file( file ) } );
}

std::unique_ptr<StartedProgram> RunningBoard::serve( const std::vector<std::string> &words ) {
   std::vector<std::string> command = { ORBIS_HOST, "serve", board_ };
   command.insert( command.end(), words.begin(), words.end() );
   auto serve = start( command, "served" );
   folder_.waitFor( "served", "serving " );
   return serve;
}

double RunningBoard::quantity( const std::string &part, const std::string &name ) {
   rapidjson::Document document;
   document.Parse( smbus( { "--json", "sim", "get", part, name } ).c_str() );
   if ( document.HasParseError() || !document.HasMember( "value" ) ) {
      ADD_FAILURE() << part << " has no " << name;
      return 0;
   }
   return document["value"].GetDouble();
}

std::map<std::string, std::map<std::string, double>> RunningBoard::quantities() {
   rapidjson::Document document;
   document.Parse( smbus( { "--json", "sim", "list" } ).c_str() );
   std::map<std::string, std::map<std::string, double>> all;
   if ( document.HasParseError() ) {
      ADD_FAILURE() << "sim list failed";
      return all;
   }
   for ( const auto &chip : document["chips"].GetArray() )
      for ( const auto &quantity : chip["quantities"].GetArray() ) {
         const std::string name = quantity["name"].GetString();
         const size_t space = name.find( ' ' );
         const bool own = space == std::string::npos;
         all[own ? chip["name"].GetString() : name.substr( 0, space )]
            [own ? name : name.substr( space + 1 )] = quantity["value"].GetDouble();
      }
   return all;
}

uint64_t RunningBoard::transfers() {
   rapidjson::Document document;
   document.Parse( smbus( { "--json", "sim", "list" } ).c_str() );
   return document["transfers"].GetUint64();
}

Ran RunningBoard::play( const std::string &path ) {
   StartedProgram client( { ORBIS_SMBUS, "sim", "play", path } );
   const int exitCode = client.wait();
   return { exitCode, client.output(), client.errors() };
}

std::string RunningBoard::smbus( const std::vector<std::string> &words ) {
   std::vector<std::string> command = { ORBIS_SMBUS };
   command.insert( command.end(), words.begin(), words.end() );
   StartedProgram client( command );
   client.wait();
   return client.output() + client.errors();
}

std::unique_ptr<StartedProgram> RunningBoard::watch( const std::string &period ) {
   return start( { ORBIS_HOST, "watch", "--period", period, board_ }, "watched" );
}

namespace {

// The end of the first complete line from `at` that is a row of `object` with `text`.
size_t endOfRow( const std::string &table, const std::string &object, const std::string &text,
                 size_t at ) {
   for ( size_t newline; ( newline = table.find( '\n', at ) ) != std::string::npos;
         at = newline + 1 ) {
      const std::string row = table.substr( at, newline - at );
      if ( row.starts_with( object + " " ) && row.find( text ) != std::string::npos )
         return newline + 1;
   }
   return std::string::npos;
}

} // namespace

size_t RunningBoard::waitForRow( const std::string &object, const std::string &text,
                                 size_t start ) {
   const auto end = std::chrono::steady_clock::now() + std::chrono::seconds( 20 );
   while ( std::chrono::steady_clock::now() < end ) {
      if ( const size_t at = endOfRow( folder_.read( "watched" ), object, text, start );
           at != std::string::npos )
         return at;
      std::this_thread::sleep_for( std::chrono::milliseconds( 5 ) );
   }
   ADD_FAILURE() << "no row of " << object << " has: " << text;
   return start;
}

size_t RunningBoard::watched() const { return folder_.read( "watched" ).size(); }

int RunningBoard::countRows( const std::string &object, const std::string &text, size_t start,
                             size_t end ) const {
   const std::string seen = folder_.read( "watched" );
   int count = 0;
   for ( size_t at = start; ( at = endOfRow( seen, object, text, at ) ) <= end; )
      ++count;
   return count;
}
