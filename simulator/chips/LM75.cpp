#include "simulator/chips/LM75.h"

#include <algorithm>
#include <cmath>

namespace Simulator {

namespace {

constexpr uint8_t shutdownBit = 0x01;       // configuration, bit 0
constexpr uint8_t configurationBits = 0x1F; // 4-3 fault queue, 2 polarity, 1 mode; 7-5 stay zero
constexpr uint16_t wordBits = 0xFF80;

} // namespace

LM75::LM75( std::string name, const Bus::Clock &clock )
   : Chip( std::move( name ) ), clock_( clock ) {
   reset();
}

void LM75::reset() {
   pointer_ = Temp;
   configuration_ = 0;
   words_ = { word( 0 ), 0, word( 75 ), word( 80 ) };
   lastRead_ = 0;
}

void LM75::temperatureIs( double celsius, const Drift &drift ) {
   celsius_ = celsius;
   drift_ = drift;
}

std::vector<Quantity> LM75::quantities() {
   return { { "temperature", "C", [this] { return celsius_ + drift_.at( clock_.now() ); },
              [this]( double celsius ) { temperatureIs( celsius ); }, -55, 125 },
            { "tOs", "C", [this] { return tOs(); } },
            { "tHyst", "C", [this] { return tHyst(); } } };
}

uint16_t LM75::word( double celsius ) {
   const long steps = std::clamp( std::lround( celsius * 2 ), -256L, 255L );
   return static_cast<uint16_t>( steps * 0x80 );
}

double LM75::celsius( uint16_t word ) { return static_cast<int16_t>( word ) / 256.0; }

void LM75::convert() {
   if ( !( configuration_ & shutdownBit ) )
      words_[Temp] = word( celsius_ + drift_.at( clock_.now() ) );
}

bool LM75::addressed( Direction direction ) {
   position_ = 0;
   if ( direction == Direction::Read )
      convert(); // both bytes of a reading come from one conversion
   return true;
}

// The upper bits of the pointer should be zero. Otherwise, as measured on real parts: the registers
// repeat every eight commands, and commands 4 to 7 return the last byte that was read.
bool LM75::command( uint32_t command ) {
   pointer_ = command & 0x07;
   return true;
}

bool LM75::write( uint8_t byte ) {
   if ( pointer_ == Configuration && position_ == 0 ) {
      convert(); // in shutdown the chip keeps this reading
      configuration_ = byte & configurationBits;
   } else if ( ( pointer_ == THyst || pointer_ == TOs ) && position_ == 1 ) {
      words_[pointer_] = static_cast<uint16_t>( firstByte_ << 8 | byte ) & wordBits;
   }
   if ( position_++ == 0 )
      firstByte_ = byte;
   return true;
}

uint8_t LM75::read() {
   if ( pointer_ == Configuration )
      lastRead_ = configuration_;
   else if ( pointer_ <= TOs )
      lastRead_ = static_cast<uint8_t>( words_[pointer_] >> ( position_++ % 2 ? 0 : 8 ) );
   return lastRead_;
}

ChipKind lm75Kind() {
   return {
      .name = "LM75",
      .description = "A thermometer.",
      .settings = { number( "temperature", "Degrees Celsius.", -55, 125 ),
                    object( "drift", "How the temperature changes by itself; it stays without it.",
                            { number( "amplitude", "Degrees Celsius, at most so far either side.",
                                      0, 50 ),
                              number( "period", "Seconds from one turn to the next.", 1, 86400 ) } )
                       .optional() },
      .settable = { "temperature" },
      .make = []( const ChipEntry &entry ) -> std::unique_ptr<Chip> {
         auto chip = std::make_unique<LM75>( entry.name(), entry.around.clock );
         Drift drift;
         if ( const auto *settings = entry.find( "drift" ) ) {
            // Neighbours drift apart: the device id is part of the seed.
            drift = Drift( *settings->numberOf( "amplitude" ),
                           std::chrono::duration<double>( *settings->numberOf( "period" ) ),
                           entry.around.seed << 32 | entry.did() );
         }
         chip->temperatureIs( entry.number( "temperature" ), drift );
         return chip;
      }
   };
}

} // namespace Simulator
