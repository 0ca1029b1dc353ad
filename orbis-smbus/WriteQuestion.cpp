#include "orbis-smbus/WriteQuestion.h"

#include "boardfiles/ChipPlaces.h"
#include "boardfiles/ObjectsFile.h"
#include "orbis-smbus/Failures.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <iostream>

namespace SmbusClient {

namespace {

constexpr size_t namedObjects = 4;

BoardFiles::ChipPlace placeOf( const Target &target ) {
   return { toString( target.bus ), toText( target.vias ), target.address };
}

bool isOn( const BoardFiles::BoardObject &object, const BoardFiles::ChipPlaces &places,
           const BoardFiles::ChipPlace &chip ) {
   std::vector<BoardFiles::ChipPlace> all;
   if ( object.device )
      all = places.of( *object.device );
   for ( const std::string &label : object.module )
      for ( BoardFiles::ChipPlace &place : places.of( label ) )
         all.push_back( std::move( place ) );
   if ( object.label )
      for ( BoardFiles::ChipPlace &place : places.of( *object.label ) )
         all.push_back( std::move( place ) );
   return std::find( all.begin(), all.end(), chip ) != all.end();
}

} // namespace

std::vector<std::string> objectsOn( const Target &target, const std::string &board,
                                    std::string &fault ) {
   BoardFiles::Findings findings;
   const std::filesystem::path folder( board );
   const auto topology = BoardFiles::readTopology( folder / "topology.json", findings );
   const auto objects = BoardFiles::readObjects( folder / "objects.json", findings );
   if ( !topology || !objects ) {
      fault = toText( findings.front() );
      return {};
   }
   const BoardFiles::ChipPlaces places( *topology );
   std::vector<std::string> names;
   for ( const BoardFiles::BoardObject &object : objects->objects )
      if ( isOn( object, places, placeOf( target ) ) )
         names.push_back( object.name );
   return names;
}

void askBeforeWrite( const Options &options ) {
   if ( options.board.empty() || options.yes )
      return;
   std::string fault;
   std::vector<std::string> names = objectsOn( options.target, options.board, fault );
   if ( !fault.empty() )
      throw Failed(
         fmt::format( "can't tell which objects are on {}: {}; --yes writes all the same",
                      toString( options.target ), fault ) );
   if ( names.empty() )
      return;
   const size_t more = names.size() - std::min( names.size(), namedObjects );
   names.resize( names.size() - more );
   const std::string who = fmt::format( "{}{}", fmt::join( names, ", " ),
                                        more > 0 ? fmt::format( " and {} more", more ) : "" );
   const std::string what = fmt::format( "{} of the board {}: its driver may be wrong about the "
                                         "chip after a write",
                                         who, options.board );
   if ( isatty( STDIN_FILENO ) == 0 || isatty( STDERR_FILENO ) == 0 )
      throw Failed( fmt::format( "nothing was written: on {} is {}; --yes writes all the same",
                                 toString( options.target ), what ) );
   fmt::print( stderr, "On {} is {}. Write? [y/N] ", toString( options.target ), what );
   std::string answer;
   std::getline( std::cin, answer );
   if ( answer != "y" && answer != "Y" && answer != "yes" )
      throw Failed( "nothing was written" );
}

} // namespace SmbusClient
