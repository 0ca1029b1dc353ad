#include "orbis-smbus/Scenario.h"

#include "orbis-smbus/Failures.h"
#include "orbis-smbus/SimCommands.h"
#include "orbis-smbus/WrongCommand.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

namespace SmbusClient {

namespace {

double parseNumber( const std::string &text ) {
   char *end = nullptr;
   const double value = std::strtod( text.c_str(), &end );
   if ( text.empty() || *end != '\0' || !std::isfinite( value ) )
      throw WrongCommand( text + " is not a number" );
   return value;
}

double parseSeconds( const std::string &text ) {
   if ( text.ends_with( "ms" ) )
      return parseNumber( text.substr( 0, text.size() - 2 ) ) / 1000;
   if ( text.ends_with( "s" ) )
      return parseNumber( text.substr( 0, text.size() - 1 ) );
   throw WrongCommand( text + " is not a time such as 3s or 250ms" );
}

SmbusControl::State clockOf( const Scenario::Ask &ask ) {
   SmbusControl::Request request;
   request.set_time( true );
   return ask( request ).state();
}

void passUntil( double seconds, const Scenario::Ask &ask ) {
   for ( ;; ) {
      const SmbusControl::State clock = clockOf( ask );
      const double left = seconds - clock.seconds();
      if ( left <= 0 )
         return;
      if ( clock.speed() > 0 ) {
         std::this_thread::sleep_for( std::chrono::duration<double>( left / clock.speed() ) );
         continue;
      }
      SmbusControl::Request step;
      step.set_step( left + 1e-9 ); // the clock counts nanoseconds
      ask( step );
   }
}

} // namespace

Scenario::Scenario( const std::string &path ) : path_( path ) {
   std::ifstream file( path );
   std::string text;
   for ( size_t line = 1; std::getline( file, text ); ++line ) {
      std::istringstream stream( text.substr( 0, text.find( '#' ) ) );
      std::vector<std::string> words;
      for ( std::string word; stream >> word; )
         words.push_back( word );
      if ( words.empty() )
         continue;
      try {
         Step step = parse( words );
         step.line = line;
         step.text = text;
         steps_.push_back( std::move( step ) );
      } catch ( const WrongCommand &error ) {
         fail( line, error.what() );
      }
   }
   if ( !file.eof() )
      throw Failed( path + ": can't be read" );
}

void Scenario::fail( size_t line, const std::string &reason ) const {
   throw Failed( fmt::format( "{}:{}: {}", path_, line, reason ) );
}

Scenario::Step Scenario::parse( const std::vector<std::string> &words ) {
   Step step;
   if ( words[0] == "at" && words.size() > 2 ) {
      step.at = parseSeconds( words[1] );
      step.request = parseSimCommand( { words.begin() + 2, words.end() } );
      return step;
   }
   const bool limited = words.size() == 6 && words[4] == "within";
   if ( words[0] != "expect" || ( words.size() != 4 && !limited ) )
      throw WrongCommand(
         "not \"at TIME COMMAND\" or \"expect PART QUANTITY VALUE [within TIME]\"" );
   step.expects = true;
   step.request = parseSimCommand( { "get", words[1], words[2] } );
   const size_t around = words[3].find( "+-" );
   step.value = parseNumber( words[3].substr( 0, around ) );
   if ( around != std::string::npos )
      step.tolerance = parseNumber( words[3].substr( around + 2 ) );
   if ( limited )
      step.within = parseSeconds( words[5] );
   return step;
}

void Scenario::play( const Scenario::Ask &ask ) const {
   const double start = clockOf( ask ).seconds();
   for ( const Step &step : steps_ ) {
      try {
         if ( step.expects ) {
            expect( step, ask );
         } else {
            passUntil( start + step.at, ask );
            ask( step.request );
         }
      } catch ( const Failed &error ) {
         fail( step.line, error.what() );
      }
      fmt::print( "{:10.3f} {}\n", clockOf( ask ).seconds() - start, step.text );
   }
}

void Scenario::expect( const Step &step, const Scenario::Ask &ask ) const {
   constexpr double pause = 0.05; // seconds of the simulation between two reads
   const double start = clockOf( ask ).seconds();
   for ( unsigned reads = 1;; ++reads ) {
      const double value = ask( step.request ).quantity().value();
      if ( std::abs( value - step.value ) <= step.tolerance )
         return;
      const double next = start + pause * reads;
      if ( next > start + step.within + pause / 2 )
         throw Failed( fmt::format( "{} of {} is {}, expected {}", step.request.get().name(),
                                    step.request.get().part(), value, step.value ) );
      passUntil( next, ask );
   }
}

} // namespace SmbusClient
