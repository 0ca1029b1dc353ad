#include "boardfiles/SimulationFile.h"

#include "boardfiles/SimulationSchema.h"

#include <fmt/format.h>

#include <map>

namespace BoardFiles {

namespace {

SimulatedChipEntry entryAt( const JsonPlace &place ) {
   const auto present = place.find( "present" );
   return { place.member( "did" ).number(), place.member( "name" ).text(),
            place.member( "chip" ).text(), !present || present->truth(), place };
}

ModuleEntry moduleAt( const JsonPlace &place ) {
   const auto present = place.find( "present" );
   ModuleEntry module{ place.member( "name" ).text(), !present || present->truth(), {}, {}, place };
   for ( const JsonPlace &chip : place.elementsOf( "chips" ) )
      module.chips.push_back( chip.text() );
   for ( const JsonPlace &set : place.elementsOf( "sets" ) )
      module.sets.push_back( { set.member( "chip" ).text(), set.member( "quantity" ).text(),
                               set.member( "in" ).value().GetDouble(),
                               set.member( "out" ).value().GetDouble(), set } );
   return module;
}

// Notes where each value of a key was first, and complains about the second.
template <typename Value>
class Unique {
 public:
   void add( const Value &value, const JsonPlace &place ) {
      const auto [first, isNew] = places_.try_emplace( value, place.pointer() );
      if ( !isNew )
         place.fail( fmt::format( "{} is at {} already", value, first->second ) );
   }

 private:
   std::map<Value, std::string> places_;
};

} // namespace

std::unique_ptr<const SimulationFile> loadSimulation( const std::string &path ) {
   auto simulation = std::make_unique<SimulationFile>();
   simulation->file = readJsonFile( path );
   checkSimulation( simulation->file );
   const JsonPlace root( simulation->file );
   if ( const auto seed = root.find( "seed" ) )
      simulation->seed = seed->number();
   Unique<std::string> names;
   for ( const JsonPlace &place : root.elementsOf( "chips" ) ) {
      SimulatedChipEntry entry = entryAt( place );
      names.add( entry.name, place.member( "name" ) );
      simulation->chips.push_back( std::move( entry ) );
   }
   Unique<std::string> modules;
   for ( const JsonPlace &place : root.elementsOf( "modules" ) ) {
      ModuleEntry entry = moduleAt( place );
      modules.add( entry.name, place.member( "name" ) );
      simulation->modules.push_back( std::move( entry ) );
   }
   return simulation;
}

} // namespace BoardFiles
