#include "board/ChipKinds.h"

#include "chips/LM75.h"
#include "chips/PCA9548.h"

#include <map>
#include <string_view>

namespace Smbusd {

namespace {

struct Recipe {
   const SimulatedChipEntry &entry;
   uint64_t seed; // this chip's own
   const Clock &clock;
};

std::unique_ptr<Chip> makeLM75( const Recipe &recipe ) {
   const rapidjson::Value &keys = recipe.entry.place.value();
   auto chip = std::make_unique<LM75>( recipe.entry.name, recipe.clock );
   Drift drift;
   if ( keys.HasMember( "drift" ) ) {
      const rapidjson::Value &told = keys["drift"];
      drift = Drift( told["amplitude"].GetDouble(),
                     std::chrono::duration<double>( told["period"].GetDouble() ), recipe.seed );
   }
   chip->temperatureIs( keys["temperature"].GetDouble(), drift );
   return chip;
}

std::unique_ptr<Chip> makePCA9548( const Recipe &recipe ) {
   return std::make_unique<PCA9548>( recipe.entry.name );
}

const std::map<std::string_view, std::unique_ptr<Chip> ( * )( const Recipe & )> kinds{
   { "LM75", makeLM75 },
   { "PCA9548", makePCA9548 },
};

} // namespace

std::unique_ptr<Chip> makeChip( const SimulatedChipEntry &entry, uint64_t seed,
                                const Clock &clock ) {
   const auto kind = kinds.find( entry.kind );
   if ( kind == kinds.end() )
      entry.place.member( "chip" ).fail( "unknown kind of chip" );
   // Neighbours drift apart: the device id is part of the seed.
   auto chip = kind->second( { entry, seed << 32 | entry.did, clock } );
   chip->presentIs( entry.present );
   return chip;
}

} // namespace Smbusd
