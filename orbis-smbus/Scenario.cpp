#include "orbis-smbus/Scenario.h"

#include "orbis-smbus/Conversation.h"
#include "orbis-smbus/SimWords.h"

#include <fmt/format.h>

#include <cmath>
#include <fstream>
#include <sstream>
#include <thread>

namespace SmbusClient {

namespace {

SmbusControl::State clockOf( ControlConversation &bench ) {
   SmbusControl::Request request;
   request.set_time( true );
   return bench.ask( request ).state();
}

void passUntil( double seconds, ControlConversation &bench ) {
   for ( ;; ) {
      const SmbusControl::State clock = clockOf( bench );
      const double left = seconds - clock.seconds();
      if ( left <= 0 )
         return;
      if ( clock.speed() > 0 ) {
         std::this_thread::sleep_for( std::chrono::duration<double>( left / clock.speed() ) );
         continue;
      }
      SmbusControl::Request step;
      step.set_step( left + 1e-9 ); // the clock counts nanoseconds
      bench.ask( step );
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
      } catch ( const NoCommand &error ) {
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
      step.request = parseSim( { words.begin() + 2, words.end() } );
      return step;
   }
   const bool limited = words.size() == 6 && words[4] == "within";
   if ( words[0] != "expect" || ( words.size() != 4 && !limited ) )
      throw NoCommand(
         "neither \"at TIME COMMAND\" nor \"expect WHOSE NAME VALUE [within TIME]\"" );
   step.expects = true;
   step.request = parseSim( { "get", words[1], words[2] } );
   const size_t around = words[3].find( "+-" );
   step.value = parseReal( words[3].substr( 0, around ) );
   if ( around != std::string::npos )
      step.tolerance = parseReal( words[3].substr( around + 2 ) );
   if ( limited )
      step.within = parseSeconds( words[5] );
   return step;
}

void Scenario::play( ControlConversation &bench ) const {
   const double start = clockOf( bench ).seconds();
   for ( const Step &step : steps_ ) {
      try {
         if ( step.expects ) {
            expect( step, bench );
         } else {
            passUntil( start + step.at, bench );
            bench.ask( step.request );
         }
      } catch ( const Failed &error ) {
         fail( step.line, error.what() );
      }
      fmt::print( "{:10.3f} {}\n", clockOf( bench ).seconds() - start, step.text );
   }
}

void Scenario::expect( const Step &step, ControlConversation &bench ) const {
   constexpr double pause = 0.05; // seconds of the simulation between two looks
   const double start = clockOf( bench ).seconds();
   for ( unsigned look = 0;; ++look ) {
      const double value = bench.ask( step.request ).quantity().value();
      if ( std::abs( value - step.value ) <= step.tolerance )
         return;
      const double next = start + pause * ( look + 1 );
      if ( next > start + step.within + pause / 2 )
         throw Failed( fmt::format( "{} of {} is {}, where {} is expected",
                                    step.request.get().name(), step.request.get().whose(), value,
                                    step.value ) );
      passUntil( next, bench );
   }
}

} // namespace SmbusClient
