#include "boardfiles/SimulationSchema.h"

#include "boardfiles/FirstFinding.h"

namespace BoardFiles {

void checkSimulation( const JsonFile &file ) {
   rapidjson::Document schema;
   schema.Parse( simulationSchema.data(), simulationSchema.size() );
   std::optional<SchemaFinding> finding = findAgainst( schema, file.document );
   if ( !finding )
      return;
   const std::string place = asText( finding->place );
   if ( finding->keyword != "anyOf" )
      throw BoardError::at( file.path, place, finding->reason );
   // None of the kinds: told by the rules of the one that it says it is.
   const rapidjson::Value &entry = *finding->place.Get( file.document );
   finding = findAgainst( schema["definitions"][entry["chip"]], entry );
   throw BoardError::at( file.path, place + asText( finding->place ), finding->reason );
}

} // namespace BoardFiles
