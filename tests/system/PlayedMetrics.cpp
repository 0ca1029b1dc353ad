#include "PlayedMetrics.h"

#include "orbis-smbus/Scenario.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <fstream>
#include <sstream>

namespace {

constexpr auto scenarioFolder = BOARDS "/kelt/scenarios/";

// What is behind "> " in NAME.events: a supply, and what it is told.
std::vector<std::string> suppliesToClear( const std::string &scenario ) {
   std::ifstream file( scenarioFolder + scenario + ".events" );
   std::vector<std::string> supplies;
   for ( std::string line; std::getline( file, line ); )
      if ( line.starts_with( "> " ) )
         supplies.push_back( line.substr( 2, line.find( ' ', 2 ) - 2 ) );
   return supplies;
}

// Each series of a text with its sample.
std::map<std::string, std::string> samplesOf( const std::string &text ) {
   std::map<std::string, std::string> samples;
   std::istringstream lines( text );
   for ( std::string line; std::getline( lines, line ); )
      if ( const size_t blank = line.rfind( ' ' ); !line.starts_with( '#' ) )
         samples[line.substr( 0, blank )] = line.substr( blank + 1 );
   return samples;
}

// The same series as a server scrapes it from this board.
std::string scraped( std::string series ) {
   if ( series.back() == '}' )
      series.back() = ',';
   else
      series += '{';
   return series + R"(job="orbis",instance="kelt"})";
}

} // namespace

PlayedMetrics::PlayedMetrics( const std::string &scenario, int secondsAfter ) {
   WatchedBoard board;
   int second = 0;
   scrapes_.push_back( board.metrics() );
   board.afterRound( [&] {
      if ( ++second % interval == 0 )
         scrapes_.push_back( board.metrics() );
   } );
   SmbusClient::Scenario( scenarioFolder + scenario + ".scenario" )
      .play( [&board]( const SmbusControl::Request &request ) { return board.ask( request ); } );
   for ( const std::string &supply : suppliesToClear( scenario ) )
      board.clearFaults( supply );
   for ( int i = 0; i < secondsAfter; ++i )
      board.round();
}

std::string PlayedMetrics::inputSeries( const std::set<std::string> &families ) const {
   std::map<std::string, std::string> series;
   std::map<std::string, std::string> before;
   for ( size_t i = 0; i < scrapes_.size(); ++i ) {
      const auto now = samplesOf( scrapes_[i] );
      for ( const auto &[name, sample] : now ) {
         if ( !families.contains( name.substr( 0, name.find( '{' ) ) ) )
            continue;
         std::string &values = series[name];
         if ( values.empty() )
            for ( size_t missing = 0; missing < i; ++missing )
               values += "_ ";
         values += sample + ' ';
      }
      for ( auto &[name, values] : series )
         if ( !now.contains( name ) )
            values += before.contains( name ) ? "stale " : "_ ";
      before = now;
   }
   rapidjson::StringBuffer buffer;
   rapidjson::Writer<rapidjson::StringBuffer> to( buffer );
   const auto member = [&to]( const char *key, const std::string &text ) {
      to.Key( key );
      to.String( text.c_str() );
   };
   to.StartArray();
   for ( const auto &[name, values] : series ) {
      to.StartObject();
      member( "series", scraped( name ) );
      member( "values", values );
      to.EndObject();
   }
   to.EndArray();
   return buffer.GetString();
}
