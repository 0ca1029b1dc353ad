#include "orbis-smbus/SimWords.h"

#include "smbus/RootBusId.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdlib>
#include <map>

namespace SmbusClient {

const char *const simCommands =
   "list                     clock, modules, chips and their quantities\n"
   "get WHOSE NAME           a quantity: get fan3.inlet rpm\n"
   "set WHOSE NAME VALUE     set psu1 load 30\n"
   "pull MODULE, insert MODULE\n"
   "stall ROTOR, free ROTOR  fan3.inlet, psu1.fan2\n"
   "nack CHIP [N/M]          misses N of every M transfers; all without\n"
   "bad-pec CHIP, stuck CHIP\n"
   "slow CHIP MS             stretches every transfer\n"
   "block-count CHIP N       says a wrong block count\n"
   "answer-size CHIP N       gives so many bytes, whatever was asked for\n"
   "corrupt CHIP REGISTER [MASK]  turns bits over in silence; all without MASK\n"
   "mend CHIP                takes all faults off\n"
   "step SECONDS, speed N    of the simulation's clock\n"
   "power on|off|cycle\n"
   "play FILE                a scenario";

namespace {

using SmbusControl::Request;
using Words = std::vector<std::string>;

uint32_t parseWhole( const std::string &text, uint32_t most ) {
   const auto number = Bus::parseNumber( text, most );
   if ( !number )
      throw NoCommand( fmt::format( "{} is no whole number up to {}", text, most ) );
   return *number;
}

void setSwitch( Request &request, const std::string &whose, const char *name, double value ) {
   request.mutable_set()->mutable_name()->set_whose( whose );
   request.mutable_set()->mutable_name()->set_name( name );
   request.mutable_set()->set_value( value );
}

SmbusControl::Fault &fault( Request &request, const Words &words ) {
   request.mutable_fault()->set_chip( words[1] );
   return *request.mutable_fault();
}

void nack( Request &request, const Words &words ) {
   SmbusControl::Fault &asked = fault( request, words );
   asked.set_missed( 1 );
   if ( words.size() < 3 )
      return;
   const size_t slash = words[2].find( '/' );
   if ( slash == std::string::npos )
      throw NoCommand( words[2] + " is no share such as 1/50" );
   asked.set_missed( parseWhole( words[2].substr( 0, slash ), UINT32_MAX ) );
   asked.set_among( parseWhole( words[2].substr( slash + 1 ), UINT32_MAX ) );
}

void corrupt( Request &request, const Words &words ) {
   SmbusControl::Corruption &asked = *fault( request, words ).mutable_corruption();
   asked.set_register_( parseWhole( words[2], UINT32_MAX ) );
   asked.set_mask( words.size() > 3 ? parseWhole( words[3], 0xFF ) : 0xFF );
}

void power( Request &request, const Words &words ) {
   static const std::map<std::string, SmbusControl::Power> powers{
      { "on", SmbusControl::ON }, { "off", SmbusControl::OFF }, { "cycle", SmbusControl::CYCLE }
   };
   const auto found = powers.find( words[1] );
   if ( found == powers.end() )
      throw NoCommand( "power is on, off or cycle, not " + words[1] );
   request.set_power( found->second );
}

struct Command {
   size_t least; // words behind the command's own
   size_t most;
   void ( *fill )( Request &, const Words & );
};

const std::map<std::string, Command> commands{
   { "list", { 0, 0, []( Request &request, const Words & ) { request.set_list( true ); } } },
   { "get",
     { 2, 2,
       []( Request &request, const Words &words ) {
          request.mutable_get()->set_whose( words[1] );
          request.mutable_get()->set_name( words[2] );
       } } },
   { "set",
     { 3, 3,
       []( Request &request, const Words &words ) {
          setSwitch( request, words[1], words[2].c_str(), parseReal( words[3] ) );
       } } },
   { "pull",
     { 1, 1, []( Request &request, const Words &words ) { request.set_pull( words[1] ); } } },
   { "insert",
     { 1, 1, []( Request &request, const Words &words ) { request.set_insert( words[1] ); } } },
   { "stall",
     { 1, 1,
       []( Request &request, const Words &words ) {
          setSwitch( request, words[1], "stalled", 1 );
       } } },
   { "free",
     { 1, 1,
       []( Request &request, const Words &words ) {
          setSwitch( request, words[1], "stalled", 0 );
       } } },
   { "nack", { 1, 2, nack } },
   { "bad-pec",
     { 1, 1,
       []( Request &request, const Words &words ) {
          fault( request, words ).set_bad_pec( true );
       } } },
   { "stuck",
     { 1, 1,
       []( Request &request, const Words &words ) {
          fault( request, words ).set_stuck( true );
       } } },
   { "slow",
     { 2, 2,
       []( Request &request, const Words &words ) {
          fault( request, words ).set_slow_ms( parseWhole( words[2], 60000 ) );
       } } },
   { "block-count",
     { 2, 2,
       []( Request &request, const Words &words ) {
          fault( request, words ).set_block_count( parseWhole( words[2], 255 ) );
       } } },
   { "answer-size",
     { 2, 2,
       []( Request &request, const Words &words ) {
          fault( request, words ).set_answer_size( parseWhole( words[2], 8192 ) );
       } } },
   { "corrupt", { 2, 3, corrupt } },
   { "mend",
     { 1, 1, []( Request &request, const Words &words ) { request.set_mend( words[1] ); } } },
   { "step",
     { 1, 1,
       []( Request &request, const Words &words ) {
          request.set_step( parseReal( words[1] ) );
       } } },
   { "speed",
     { 1, 1,
       []( Request &request, const Words &words ) {
          request.set_speed( parseReal( words[1] ) );
       } } },
   { "power", { 1, 1, power } },
};

} // namespace

double parseReal( const std::string &text ) {
   char *end = nullptr;
   const double value = std::strtod( text.c_str(), &end );
   if ( text.empty() || *end != '\0' || !std::isfinite( value ) )
      throw NoCommand( text + " is no number" );
   return value;
}

double parseSeconds( const std::string &text ) {
   if ( text.ends_with( "ms" ) )
      return parseReal( text.substr( 0, text.size() - 2 ) ) / 1000;
   if ( text.ends_with( "s" ) )
      return parseReal( text.substr( 0, text.size() - 1 ) );
   throw NoCommand( text + " is no time such as 3s or 250ms" );
}

SmbusControl::Request parseSim( const Words &words ) {
   const auto found = commands.find( words.empty() ? "" : words[0] );
   if ( found == commands.end() )
      throw NoCommand( words.empty() ? "no command" : words[0] + " is no command" );
   const size_t behind = words.size() - 1;
   if ( behind < found->second.least || behind > found->second.most )
      throw NoCommand( fmt::format( "{} takes {} words behind it, not {}", words[0],
                                    found->second.least, behind ) );
   Request request;
   found->second.fill( request, words );
   return request;
}

} // namespace SmbusClient
