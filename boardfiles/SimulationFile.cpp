#include "boardfiles/SimulationFile.h"

#include "boardfiles/Nearest.h"
#include "boardfiles/Pattern.h"
#include "boardfiles/RootBusText.h"
#include "boardfiles/Schema.h"
#include "boardfiles/TopologyFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

namespace BoardFiles {

namespace {

const Schema &simulationRules() {
   static const Schema schema( simulationSchema );
   return schema;
}

bool isPresent( const Json &entry ) {
   const Json *present = entry.find( "present" );
   return !present || present->isTrue();
}

SimulatedChip chipIn( const Json &entry ) {
   return { .did = *entry.unsignedOf( "did" ),
            .didPlace = entry.find( "did" )->place(),
            .secondDid = entry.unsignedOf( "diagnostics" ),
            .name = *entry.textOf( "name" ),
            .kind = *entry.textOf( "chip" ),
            .present = isPresent( entry ),
            .settings = entry,
            .place = entry.place() };
}

SimulatedModule moduleIn( const Json &entry ) {
   SimulatedModule module{ .name = *entry.textOf( "name" ),
                           .present = isPresent( entry ),
                           .place = entry.place() };
   for ( const Json &chip : entry.elementsOf( "chips" ) )
      module.chips.emplace_back( chip.toText().value_or( "" ) );
   if ( const Json *cage = entry.find( "cage" ) )
      module.cage = { cage->textOf( "chip" ).value_or( "" ), cage->textOf( "name" ).value_or( "" ),
                      cage->place() };
   for ( const Json &set : entry.elementsOf( "sets" ) )
      module.sets.push_back(
         { set.textOf( "chip" ).value_or( "" ), set.textOf( "quantity" ).value_or( "" ),
           set.numberOf( "in" ).value_or( 0 ), set.numberOf( "out" ).value_or( 0 ), set.place() } );
   return module;
}

SimulatedFibre fibreIn( const Json &entry ) {
   const auto ends = entry.elementsOf( "ends" );
   return { std::string( ends[0].toText().value_or( "" ) ),
            std::string( ends[1].toText().value_or( "" ) ), entry.numberOf( "loss" ).value_or( 0 ),
            entry.place() };
}

void addWires( const Json &entry, SimulationFile &simulation, Findings &findings ) {
   const auto bus = rootBusIn( *entry.find( "bus" ), findings );
   if ( !bus )
      return;
   const auto [first, isNew] = simulation.wires.try_emplace(
      *bus, SimulatedWires{ *entry.unsignedOf( "clock" ), entry.place() } );
   if ( !isNew )
      report( findings, entry.place(),
              fmt::format( "{} is there twice, first at {}", toString( *bus ),
                           toText( first->second.place ) ) );
}

// Reports each name that an entry before has.
class Names {
 public:
   void add( const Json &entry, Findings &findings ) {
      const Json *name = entry.find( "name" );
      if ( !name || !name->toText() )
         return;
      const auto [first, isNew] =
         places_.try_emplace( std::string( *name->toText() ), name->place() );
      if ( !isNew )
         report( findings, name->place(),
                 fmt::format( "the name {} is there twice, first at {}", first->first,
                              toText( first->second ) ) );
   }

 private:
   std::map<std::string, Place> places_;
};

class SimulationCheck {
 public:
   SimulationCheck( const SimulationFile &simulation, const TopologyFile &topology,
                    Findings &findings )
      : simulation_( simulation ), topology_( topology ), findings_( findings ) {}

   void run() {
      for ( const SimulatedChip &chip : simulation_.chips ) {
         byName_.emplace( chip.name, &chip );
         checkDevice( chip );
      }
      for ( const TopologyRoot &root : topology_.roots )
         checkBus( root.bus );
      for ( const SimulatedModule &module : simulation_.modules )
         checkModule( module );
      for ( const SimulatedFibre &fibre : simulation_.fibres )
         checkFibre( fibre );
      for ( const auto &[bus, wires] : simulation_.wires )
         if ( std::none_of( topology_.roots.begin(), topology_.roots.end(),
                            [&id = bus]( const TopologyRoot &root ) { return root.id == id; } ) )
            report( findings_, wires.place,
                    fmt::format( "{} has no bus {}", topology_.path, toString( bus ) ) );
   }

 private:
   static const Json &rulesOf( const std::string &kind ) {
      return *simulationRules().root().find( "definitions" )->find( kind );
   }

   void checkDevice( const SimulatedChip &chip ) {
      checkDid( chip.did, chip.didPlace );
      if ( chip.secondDid )
         checkDid( *chip.secondDid, chip.settings.find( "diagnostics" )->place() );
   }

   void checkDid( uint32_t did, const Place &place ) {
      const TopologyDevice *device = topology_.byDid( did );
      if ( !device || !device->address )
         report( findings_, place,
                 fmt::format( "no device of {} has did {} and an address", topology_.path, did ) );
   }

   // Whether a mux's device, or another at its place on the bus, has a chip that can be one.
   void checkMux( const TopologyMux &mux, const TopologyBus &bus ) {
      const TopologyDevice *device = topology_.byDid( mux.did );
      if ( !device || !device->address )
         return;
      const auto isHere = [&]( const SimulatedChip &chip ) {
         const Json *multiplexer = rulesOf( chip.kind ).find( "multiplexer" );
         return multiplexer && multiplexer->isTrue() &&
                std::any_of( bus.devices.begin(), bus.devices.end(), [&]( const auto &each ) {
                   return each.did == chip.did && each.address == device->address;
                } );
      };
      if ( std::none_of( simulation_.chips.begin(), simulation_.chips.end(), isHere ) )
         report( findings_, simulation_.chipsPlace,
                 fmt::format( "device {} has no multiplexer chip, which the mux at {} needs",
                              mux.did, toText( mux.place ) ) );
   }

   void checkBus( const TopologyBus &bus ) {
      std::map<uint8_t, const SimulatedChip *> taken;
      for ( const SimulatedChip &chip : simulation_.chips ) {
         const auto here =
            std::find_if( bus.devices.begin(), bus.devices.end(),
                          [&]( const TopologyDevice &each ) { return each.did == chip.did; } );
         if ( !chip.present || here == bus.devices.end() || !here->address )
            continue;
         const auto [first, isNew] = taken.emplace( *here->address, &chip );
         if ( !isNew )
            report( findings_, chip.place,
                    fmt::format( "{} is already at this address of this bus ({})",
                                 first->second->name, toText( here->place ) ) );
      }
      for ( const TopologyMux &mux : bus.muxes ) {
         checkMux( mux, bus );
         for ( const TopologyBus &behind : mux.busses )
            checkBus( behind );
      }
   }

   void checkModule( const SimulatedModule &module ) {
      for ( const std::string &name : module.chips ) {
         const SimulatedChip *chip = chipNamed( name, module.place );
         if ( chip && chip->present != module.present )
            report( findings_, module.place,
                    fmt::format( "{} is {}, but the module is {}", name,
                                 chip->present ? "present" : "absent",
                                 module.present ? "present" : "absent" ) );
      }
      for ( const SimulatedModule::Set &set : module.sets )
         checkQuantity( set );
      if ( module.cage )
         checkQuantity( { .chip = module.cage->chip,
                          .quantity = module.cage->name + " presence",
                          .place = module.cage->place } );
   }

   void checkFibre( const SimulatedFibre &fibre ) {
      for ( const std::string &end : { fibre.one, fibre.other } ) {
         std::vector<std::string> names;
         for ( const SimulatedModule &module : simulation_.modules )
            names.push_back( module.name );
         if ( std::find( names.begin(), names.end(), end ) == names.end() )
            report( findings_, fibre.place,
                    fmt::format( "no module is called {}{}", end, didYouMean( end, names ) ) );
         else if ( const auto [first, isNew] = fibres_.try_emplace( end, fibre.place ); !isNew )
            report( findings_, fibre.place,
                    fmt::format( "{} has a fibre already, at {}", end, toText( first->second ) ) );
      }
   }

   const SimulatedChip *chipNamed( const std::string &name, const Place &place ) {
      const auto found = byName_.find( name );
      if ( found != byName_.end() )
         return found->second;
      std::vector<std::string> names;
      for ( const auto &[each, chip] : byName_ )
         names.push_back( each );
      report( findings_, place,
              fmt::format( "no chip is called {}{}", name, didYouMean( name, names ) ) );
      return nullptr;
   }

   // "settable" of a kind's rules: regular expressions for the quantities that can be set.
   static bool canSet( const std::string &kind, const std::string &quantity ) {
      const auto patterns = rulesOf( kind ).elementsOf( "settable" );
      return std::any_of( patterns.begin(), patterns.end(), [&]( const Json &pattern ) {
         return matchesWhole( quantity, std::string( *pattern.toText() ) );
      } );
   }

   // The chip may also be named by what its quantities begin with: "fan3.inlet" and "stalled".
   void checkQuantity( const SimulatedModule::Set &set ) {
      const auto named = byName_.find( set.chip );
      if ( named != byName_.end() ) {
         if ( !canSet( named->second->kind, set.quantity ) )
            report(
               findings_, set.place,
               fmt::format( "{} has no quantity \"{}\" that can be set", set.chip, set.quantity ) );
         return;
      }
      const std::string whole = set.chip + " " + set.quantity;
      const auto &chips = simulation_.chips;
      if ( std::none_of( chips.begin(), chips.end(),
                         [&]( const SimulatedChip &chip ) { return canSet( chip.kind, whole ); } ) )
         chipNamed( set.chip, set.place );
   }

   const SimulationFile &simulation_;
   const TopologyFile &topology_;
   Findings &findings_;
   std::map<std::string, const SimulatedChip *> byName_;
   std::map<std::string, Place> fibres_; // by their ends
};

} // namespace

std::unique_ptr<const SimulationFile> readSimulation( const std::filesystem::path &path,
                                                      Findings &findings ) {
   const auto json = readJson( path, findings );
   if ( !json )
      return nullptr;
   const size_t before = findings.size();
   simulationRules().check( *json, findings );
   auto simulation = std::make_unique<SimulationFile>();
   simulation->path = path.string();
   simulation->chipsPlace = json->find( "chips" ) ? json->find( "chips" )->place() : json->place();
   Names names;
   for ( const Json &entry : json->elementsOf( "chips" ) )
      names.add( entry, findings );
   Names modules;
   for ( const Json &entry : json->elementsOf( "modules" ) )
      modules.add( entry, findings );
   if ( findings.size() != before )
      return nullptr;
   for ( const Json &entry : json->elementsOf( "busses" ) )
      addWires( entry, *simulation, findings );
   simulation->seed = json->unsignedOf( "seed" ).value_or( 0 );
   for ( const Json &entry : json->elementsOf( "chips" ) )
      simulation->chips.push_back( chipIn( entry ) );
   for ( const Json &entry : json->elementsOf( "modules" ) )
      simulation->modules.push_back( moduleIn( entry ) );
   for ( const Json &entry : json->elementsOf( "fibres" ) )
      simulation->fibres.push_back( fibreIn( entry ) );
   return simulation;
}

void checkSimulation( const SimulationFile &simulation, const TopologyFile &topology,
                      Findings &findings ) {
   SimulationCheck( simulation, topology, findings ).run();
}

} // namespace BoardFiles
