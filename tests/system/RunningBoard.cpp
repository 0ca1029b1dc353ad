#include "RunningBoard.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <sstream>
#include <thread>

using SmbusdTest::StartedProgram;

RunningBoard::RunningBoard( const std::string &name ) : board_( BOARDS "/" + name ) {
   startServer();
}

RunningBoard::RunningBoard( const std::string &topology, const std::string &objects,
                            const std::string &simulation )
   : board_( folder_.file( "board" ) ) {
   std::filesystem::create_directory( board_ );
   folder_.write( "board/topology.json", topology );
   folder_.write( "board/objects.json", objects );
   folder_.write( "board/simulation.json", simulation );
   // What the drivers want lies beside the board.
   std::filesystem::copy( BOARDS "/libOrbisDriversKelt.drivers.json",
                          folder_.file( "libOrbisDriversKelt.drivers.json" ) );
   startServer();
}

void RunningBoard::startServer() {
   setenv( "ORBIS_SMBUS_SOCKET", socket_.c_str(), 1 );
   server_ = std::make_unique<StartedProgram>(
      std::vector<std::string>{ ORBIS_SMBUSD, "--simulate", board_ + "/topology.json",
                                "--simulation", board_ + "/simulation.json" } );
   ASSERT_TRUE( server_->waitForError( "serving" ) );
}

void RunningBoard::killServer() {
   server_->signal( SIGKILL );
   server_->wait();
}

Shown RunningBoard::show() {
   StartedProgram host( { ORBIS_HOST, "show", "--json", board_ } );
   Shown shown;
   shown.exitCode = host.wait();
   rapidjson::Document document;
   document.Parse( host.output().c_str() );
   if ( document.HasParseError() || !document.IsObject() ) {
      ADD_FAILURE() << "not a JSON object: " << host.output() << host.errors();
      return shown;
   }
   for ( const auto &object : document["objects"].GetArray() ) {
      const std::string name = object["name"].GetString();
      const std::string state = object["state"].GetString();
      if ( state != "ok" )
         shown.faults[name] =
            state + ": " + ( object.HasMember( "fault" ) ? object["fault"].GetString() : "" );
      for ( const auto &value : object["values"].GetArray() ) {
         if ( std::string( value["state"].GetString() ) != "ok" )
            shown.faults[name] = std::string( value["state"].GetString() ) + ": " +
                                 ( value.HasMember( "fault" ) ? value["fault"].GetString() : "" );
         else if ( value["value"].IsNumber() )
            shown.values[name + " " + value["name"].GetString()] = value["value"].GetDouble();
      }
   }
   return shown;
}

int RunningBoard::host( const std::vector<std::string> &words ) {
   std::vector<std::string> command = { ORBIS_HOST };
   command.insert( command.end(), words.begin(), words.end() );
   if ( words.size() > 1 )
      command.push_back( "--board" );
   command.push_back( board_ );
   return StartedProgram( command ).wait();
}

double RunningBoard::quantity( const std::string &whose, const std::string &name ) {
   rapidjson::Document document;
   document.Parse( smbus( { "--json", "sim", "get", whose, name } ).c_str() );
   if ( document.HasParseError() || !document.HasMember( "value" ) ) {
      ADD_FAILURE() << whose << " tells no " << name;
      return 0;
   }
   return document["value"].GetDouble();
}

std::string RunningBoard::smbus( const std::vector<std::string> &words ) {
   std::vector<std::string> command = { ORBIS_SMBUS };
   command.insert( command.end(), words.begin(), words.end() );
   StartedProgram client( command );
   client.wait();
   return client.output() + client.errors();
}

std::unique_ptr<StartedProgram> RunningBoard::watch( const std::string &period ) {
   return std::make_unique<StartedProgram>(
      std::vector<std::string>{ "/bin/sh", "-c",
                                fmt::format( "exec '{}' watch --period {} '{}' >'{}'", ORBIS_HOST,
                                             period, board_, folder_.file( "watched" ) ) } );
}

size_t RunningBoard::waitForRow( const std::string &object, const std::string &text,
                                 size_t start ) {
   const auto end = std::chrono::steady_clock::now() + std::chrono::seconds( 20 );
   while ( std::chrono::steady_clock::now() < end ) {
      std::ifstream file( folder_.file( "watched" ) );
      std::stringstream all;
      all << file.rdbuf();
      const std::string seen = all.str();
      for ( size_t at = start; at < seen.size(); ) {
         const size_t newline = seen.find( '\n', at );
         if ( newline == std::string::npos )
            break;
         const std::string row = seen.substr( at, newline - at );
         at = newline + 1;
         if ( row.starts_with( object + " " ) && row.find( text ) != std::string::npos )
            return at;
      }
      std::this_thread::sleep_for( std::chrono::milliseconds( 5 ) );
   }
   ADD_FAILURE() << "no row of " << object << " came with: " << text;
   return start;
}
