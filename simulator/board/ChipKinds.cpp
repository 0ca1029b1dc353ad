#include "simulator/board/ChipKinds.h"

#include "simulator/chips/EMC2305.h"
#include "simulator/chips/FruImage.h"
#include "simulator/chips/LM75.h"
#include "simulator/chips/ModuleImage.h"
#include "simulator/chips/PCA9506.h"
#include "simulator/chips/PCA9548.h"
#include "simulator/chips/PmbusSupply.h"
#include "simulator/chips/SystemCpld.h"
#include "simulator/chips/XcvrCpld.h"

#include <map>
#include <string_view>

namespace Simulator {

namespace {

// An entry as the schema has let it pass: a key that it calls for is there, and of its type.
struct Recipe {
   const BoardFiles::SimulatedChipEntry &entry;
   const Surroundings &around;

   const std::string &name() const { return entry.name; }
   bool has( const char *key ) const { return entry.place.value().HasMember( key ); }
   const rapidjson::Value &at( const char *key ) const { return entry.place.value()[key]; }
   double number( const char *key ) const { return at( key ).GetDouble(); }
   double number( const char *key, double otherwise ) const {
      return has( key ) ? number( key ) : otherwise;
   }
   std::string text( const char *key ) const { return at( key ).GetString(); }
   std::vector<unsigned> numbers( const char *key ) const {
      std::vector<unsigned> all;
      for ( const auto &number : at( key ).GetArray() )
         all.push_back( number.GetUint() );
      return all;
   }
};

std::unique_ptr<Chip> makeLM75( const Recipe &recipe ) {
   auto chip = std::make_unique<LM75>( recipe.name(), recipe.around.clock );
   Drift drift;
   if ( recipe.has( "drift" ) ) {
      const rapidjson::Value &told = recipe.at( "drift" );
      // Neighbours drift apart: the device id is part of the seed.
      drift = Drift( told["amplitude"].GetDouble(),
                     std::chrono::duration<double>( told["period"].GetDouble() ),
                     recipe.around.seed << 32 | recipe.entry.did );
   }
   chip->temperatureIs( recipe.number( "temperature" ), drift );
   return chip;
}

std::unique_ptr<Chip> makePCA9548( const Recipe &recipe ) {
   return std::make_unique<PCA9548>( recipe.name() );
}

std::unique_ptr<Chip> makeEMC2305( const Recipe &recipe ) {
   std::vector<EMC2305::Rotor> rotors;
   for ( const auto &rotor : recipe.at( "rotors" ).GetArray() )
      rotors.push_back( { rotor["name"].GetString(), rotor["maxRpm"].GetDouble(),
                          static_cast<uint8_t>( rotor["bootDrive"].GetUint() ) } );
   return std::make_unique<EMC2305>( recipe.name(), recipe.around.clock, std::move( rotors ) );
}

std::unique_ptr<Chip> makePCA9506( const Recipe &recipe ) {
   auto chip = std::make_unique<PCA9506>( recipe.name() );
   if ( recipe.has( "pullDown" ) ) {
      for ( const unsigned pin : recipe.numbers( "pullDown" ) )
         chip->pullIs( pin, false );
   }
   if ( recipe.has( "powerOff" ) )
      chip->onHigh( recipe.numbers( "powerOff" ), recipe.around.powerOff );
   return chip;
}

std::unique_ptr<Chip> makePmbusSupply( const Recipe &recipe ) {
   SupplyModel::Rating rating;
   rating.nominalVolts = recipe.number( "volts", rating.nominalVolts );
   rating.maxAmperes = recipe.number( "maxAmperes", rating.maxAmperes );
   rating.efficiency = recipe.number( "efficiency", rating.efficiency );
   const auto &maxRpm = recipe.at( "maxRpm" );
   for ( rapidjson::SizeType fan = 0; fan < maxRpm.Size(); ++fan )
      rating.maxRpm[fan] = maxRpm[fan].GetDouble();
   auto chip = std::make_unique<PmbusSupply>(
      recipe.name(), recipe.around.address, recipe.around.clock, rating,
      PmbusSupply::Identity{ recipe.text( "manufacturer" ), recipe.text( "model" ),
                             recipe.text( "revision" ), recipe.text( "serial" ) } );
   chip->model().lineIs( recipe.number( "line" ) );
   chip->model().loadIs( recipe.number( "load" ) );
   chip->model().ambientIs( recipe.number( "ambient" ) );
   chip->model().settle();
   return chip;
}

std::unique_ptr<Chip> makeFru24C02( const Recipe &recipe ) {
   const FruProduct product{ recipe.text( "manufacturer" ), recipe.text( "product" ),
                             recipe.text( "partNumber" ),   recipe.text( "version" ),
                             recipe.text( "serial" ),       recipe.text( "assetTag" ) };
   return std::make_unique<Eeprom24C02>( recipe.name(), fruImage( product ) );
}

ModuleIdentity identity( const Recipe &recipe ) {
   return { recipe.text( "vendor" ), recipe.text( "partNumber" ), recipe.text( "revision" ),
            recipe.text( "serial" ), recipe.text( "date" ) };
}

std::unique_ptr<Chip> makeSfpModule( const Recipe &recipe ) {
   return std::make_unique<Eeprom24C02>( recipe.name(), sfpImage( identity( recipe ) ) );
}

std::unique_ptr<Chip> makeQsfpModule( const Recipe &recipe ) {
   return std::make_unique<Eeprom24C02>( recipe.name(), qsfpImage( identity( recipe ) ) );
}

Cpld::Registers registers( const Recipe &recipe ) {
   Cpld::Registers all;
   if ( recipe.has( "registers" ) ) {
      for ( const auto &each : recipe.at( "registers" ).GetArray() )
         all[static_cast<uint16_t>( each["address"].GetUint() )] =
            static_cast<uint8_t>( each["value"].GetUint() );
   }
   return all;
}

std::unique_ptr<Chip> makeQsfpCpld( const Recipe &recipe ) {
   return std::make_unique<XcvrCpld>( recipe.name(), XcvrCpld::qsfpCpld, 1, registers( recipe ) );
}

std::unique_ptr<Chip> makeSfpCpld( const Recipe &recipe ) {
   const auto firstQsfp = static_cast<unsigned>( recipe.number( "firstQsfp", 1 ) );
   return std::make_unique<XcvrCpld>( recipe.name(), XcvrCpld::sfpCpld, firstQsfp,
                                      registers( recipe ) );
}

std::unique_ptr<Chip> makeSystemCpld( const Recipe &recipe ) {
   auto chip = std::make_unique<SystemCpld>( recipe.name(), registers( recipe ) );
   chip->onPowerCycle( recipe.around.powerCycle );
   return chip;
}

const std::map<std::string_view, std::unique_ptr<Chip> ( * )( const Recipe & )> kinds{
   { "LM75", makeLM75 },           { "PCA9548", makePCA9548 },         { "EMC2305", makeEMC2305 },
   { "PCA9506", makePCA9506 },     { "PmbusSupply", makePmbusSupply }, { "Fru24C02", makeFru24C02 },
   { "SfpModule", makeSfpModule }, { "QsfpModule", makeQsfpModule },   { "QsfpCpld", makeQsfpCpld },
   { "SfpCpld", makeSfpCpld },     { "SystemCpld", makeSystemCpld },
};

} // namespace

std::unique_ptr<Chip> makeChip( const BoardFiles::SimulatedChipEntry &entry,
                                const Surroundings &around ) {
   const auto kind = kinds.find( entry.kind );
   if ( kind == kinds.end() )
      entry.place.member( "chip" ).fail( "unknown kind of chip" );
   try {
      auto chip = kind->second( { entry, around } );
      chip->presentIs( entry.present );
      return chip;
   } catch ( const std::length_error &error ) {
      entry.place.fail( error.what() );
   }
}

} // namespace Simulator
