#include "boardfiles/Board.h"

#include "boardfiles/DeviceCheck.h"
#include "boardfiles/ObjectsFile.h"
#include "boardfiles/SimulationFile.h"

#include <fmt/format.h>

#include <iterator>

namespace BoardFiles {

namespace {

// A finding inside an object names it.
void nameFindings( const std::vector<BoardObject> &objects, Findings &findings, size_t from ) {
   for ( size_t i = from; i < findings.size(); ++i ) {
      const Place &place = findings[i].place;
      for ( const BoardObject &object : objects ) {
         if ( place.file == object.place.file &&
              ( place.pointer + "/" ).starts_with( object.place.pointer + "/" ) )
            findings[i].object = object.name;
      }
   }
}

ObjectDescription describe( const BoardObject &object, const DriverTable &table,
                            const ChipPlaces &places ) {
   ObjectDescription description{ .kind = *object.kind,
                                  .name = object.name,
                                  .text = object.label.value_or( "" ),
                                  .alert = static_cast<float>( object.alert.value_or( 0 ) ),
                                  .critical = static_cast<float>( object.critical.value_or( 0 ) ),
                                  .value = object.value.value_or( 0 ),
                                  .reads = object.reads,
                                  .health = object.health };
   if ( object.alert && object.critical ) {
      ValueLimits &limits = description.health.limits["temperature"];
      limits.highWarning = object.alert;
      limits.highCritical = object.critical;
   }
   if ( object.label )
      description.chips = places.of( *object.label );
   if ( object.device ) {
      const DeviceDocument &device = *object.device;
      description.text = device.text;
      description.chips = places.of( device );
      description.did = device.did->number;
      description.driver = device.driver;
      description.address = device.address->number;
      const DriverRule &driver = table.drivers.find( device.driver )->second;
      const std::string &fullScale = driver.makes.find( nameOf( *object.kind ) )->second.fullScale;
      if ( !fullScale.empty() )
         description.fullScale = device.argumentNumber( fullScale ).value_or( 0 );
   }
   return description;
}

constexpr unsigned mostLanes = 8; // of a module

// The module of a cage. Limits of the cage's row are those of the module's values.
ObjectDescription moduleOf( const BoardObject &cage, const TopologyFile &topology,
                            const ChipPlaces &places ) {
   const TopologyDevice *device = topology.byLabel( cage.module.front() );
   ObjectDescription module{ .kind = Kind::Module,
                             .name = moduleNameOf( cage.name ),
                             .text = cage.module.front(),
                             .second = cage.module.size() > 1 ? cage.module[1] : "",
                             .did = device->did,
                             .health = { .in = cage.name } };
   for ( const auto &[value, limits] : cage.health.limits ) {
      module.health.limits.emplace( value, limits );
      for ( unsigned lane = 1; lane <= mostLanes; ++lane )
         module.health.limits.emplace( fmt::format( "{}_{}", value, lane ), limits );
   }
   for ( const std::string &label : cage.module )
      for ( const ChipPlace &chip : places.of( label ) )
         module.chips.push_back( chip );
   if ( !module.chips.empty() )
      module.address = module.value = static_cast<uint8_t>( module.chips.front().address );
   return module;
}

// By did, as the documents of the objects name them.
std::map<uint32_t, std::string> driversOf( const ObjectsFile &objects ) {
   std::map<uint32_t, std::string> drivers;
   for ( const BoardObject &object : objects.objects )
      if ( object.device && object.device->did && !object.device->isMultiDevice )
         drivers.emplace( object.device->did->number, object.device->driver );
   return drivers;
}

std::vector<std::string> namesOf( const ObjectsFile &objects ) {
   std::vector<std::string> names;
   for ( const BoardObject &object : objects.objects )
      names.push_back( object.name );
   return names;
}

} // namespace

Board withoutModules( Board board, const std::string &but ) {
   std::erase_if( board.objects, [&but]( const ObjectDescription &one ) {
      return one.kind == Kind::Module && one.name != but;
   } );
   return board;
}

std::optional<Board> loadBoard( const std::filesystem::path &folder,
                                const std::filesystem::path &drivers, Findings &findings ) {
   Findings found;
   const auto topology = readTopology( folder / "topology.json", found );
   const bool isWiringKnown = topology && !( topology->roots.empty() && hasErrors( found ) );
   const size_t beforeObjects = found.size();
   const auto objects = readObjects( folder / "objects.json", found );
   const auto table = readDriverTable( drivers, found );
   if ( isWiringKnown && objects && table ) {
      DeviceCheck devices( *table, *topology, found );
      for ( const BoardObject &object : objects->objects )
         devices.check( object );
   }
   if ( objects )
      nameFindings( objects->objects, found, beforeObjects );
   const auto simulationPath = folder / "simulation.json";
   std::unique_ptr<const SimulationFile> simulation;
   if ( std::filesystem::exists( simulationPath ) ) {
      simulation = readSimulation( simulationPath, found );
      if ( simulation && topology )
         checkSimulation( *simulation, *topology, found );
   }
   ChipRegisters registers;
   if ( const auto path = folder / "registers.json"; table && std::filesystem::exists( path ) )
      registers = readRegisters( path, *table, found );
   Panel panel;
   if ( const auto path = folder / "panel.json"; objects && std::filesystem::exists( path ) )
      panel = readPanel( path, namesOf( *objects ), found );
   std::optional<SafeState> safeState;
   if ( const auto path = folder / "safe-state.json";
        isWiringKnown && objects && table && std::filesystem::exists( path ) ) {
      const ChipPlaces places( *topology );
      safeState = readSafeState( path, { places, registers, driversOf( *objects ) }, found );
   }
   const bool usable = !hasErrors( found );
   findings.insert( findings.end(), std::make_move_iterator( found.begin() ),
                    std::make_move_iterator( found.end() ) );
   if ( !usable || !topology || !objects || !table )
      return {};
   Board board{ .folder = folder.string(),
                .topology = topology->text,
                .traces = table->traces,
                .server = table->server,
                .busses =
                   busLoads( *topology, objects->objects, *table,
                             simulation ? simulation->wires : decltype( simulation->wires )() ),
                .registers = std::move( registers ),
                .panel = std::move( panel ),
                .safeState = std::move( safeState ) };
   const ChipPlaces places( *topology );
   for ( const BoardObject &object : objects->objects )
      board.objects.push_back( describe( object, *table, places ) );
   for ( const BoardObject &object : objects->objects )
      if ( !object.module.empty() )
         board.objects.push_back( moduleOf( object, *topology, places ) );
   board.rules = objects->rules;
   return board;
}

} // namespace BoardFiles
