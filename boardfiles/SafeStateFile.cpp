#include "boardfiles/SafeStateFile.h"

#include "boardfiles/Schema.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace BoardFiles {
namespace {

constexpr uint8_t allBits = 0xFF;

class SafeStateReader {
 public:
   SafeStateReader( const KnownChips &chips, Findings &findings )
      : chips_( chips ), findings_( findings ) {}

   void read( const Json &json, SafeState &state ) {
      const uint32_t did = json.unsignedOf( "did" ).value_or( 0 );
      const auto chip = chips_.places.of( did );
      if ( !chip )
         return report( findings_, json.find( "did" )->place(),
                        fmt::format( "the topology has no chip for device {}", did ) );
      SafeRegister write{ .chip = *chip,
                          .number = byteOf( json, "register" ),
                          .value = byteOf( json, "value" ) };
      if ( json.find( "mask" ) )
         write.mask = byteOf( json, "mask" );
      checkRegister( json, did, write );
      if ( write.value & ~write.mask.value_or( allBits ) )
         report( findings_, json.find( "value" )->place(),
                 fmt::format( "{:#04x} has bits outside of its mask {:#04x}", write.value,
                              *write.mask ) );
      for ( const SafeRegister &earlier : state.writes )
         if ( earlier.chip == write.chip && earlier.number == write.number &&
              earlier.mask.value_or( allBits ) & write.mask.value_or( allBits ) )
            report( findings_, json.place(),
                    fmt::format( "an earlier entry writes the same bits of register {:#04x} of {}",
                                 write.number, toText( write.chip ) ) );
      state.writes.push_back( std::move( write ) );
   }

 private:
   static uint8_t byteOf( const Json &json, std::string_view key ) {
      return static_cast<uint8_t>( json.unsignedOf( key ).value_or( 0 ) );
   }

   // A bit of another thing may be one that keeps the board under power.
   void checkRegister( const Json &json, uint32_t did, const SafeRegister &write ) {
      const Place place = json.find( "register" )->place();
      const auto driver = chips_.drivers.find( did );
      if ( driver == chips_.drivers.end() )
         return report( findings_, json.find( "did" )->place(),
                        fmt::format( "no object says which driver device {} has, so that its "
                                     "registers are not known",
                                     did ) );
      const auto known = chips_.registers.find( driver->second );
      const auto &all =
         known == chips_.registers.end() ? std::vector<ChipRegister>() : known->second;
      const auto one = std::find_if( all.begin(), all.end(), [&]( const ChipRegister &each ) {
         return each.number == write.number;
      } );
      if ( one == all.end() )
         return report( findings_, place,
                        fmt::format( "registers.json has no register {:#04x} of {}", write.number,
                                     driver->second ) );
      if ( one->bytes != 1 )
         return report( findings_, place,
                        fmt::format( "\"{}\" of {} has {} bytes; only one can be written",
                                     one->name, driver->second, one->bytes ) );
      if ( !one->isWhole && write.mask.value_or( allBits ) == allBits )
         report(
            findings_, json.place(),
            fmt::format( "\"{}\" of {} has bits of several things: a \"mask\" has to say which "
                         "of them are meant",
                         one->name, driver->second ) );
   }

   const KnownChips &chips_;
   Findings &findings_;
};

} // namespace

SafeState readSafeState( const std::filesystem::path &path, const KnownChips &chips,
                         Findings &findings ) {
   static const Schema schema( safeStateSchema );
   const auto json = readJson( path, findings );
   if ( !json )
      return {};
   const size_t before = findings.size();
   schema.check( *json, findings );
   if ( findings.size() > before )
      return {};
   SafeState state;
   state.lease = json->unsignedOf( "lease" ).value_or( state.lease );
   SafeStateReader reader( chips, findings );
   for ( const Json &write : json->elementsOf( "writes" ) )
      reader.read( write, state );
   return state;
}

} // namespace BoardFiles
