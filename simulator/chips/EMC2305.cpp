#include "simulator/chips/EMC2305.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace Simulator {

namespace {

enum class Access : uint8_t { ReadOnly, ReadWrite, Lockable };

struct Row {
   uint8_t address;
   uint8_t powerOn;
   Access access;
};

constexpr uint8_t stallStatus = 0x25;
constexpr uint8_t softwareLock = 0xEF;

constexpr Row common[] = {
   { 0x20, 0x40, Access::Lockable },  // configuration
   { 0x24, 0x00, Access::ReadOnly },  // fan status
   { 0x25, 0x00, Access::ReadOnly },  // fan stall status
   { 0x26, 0x00, Access::ReadOnly },  // fan spin status
   { 0x27, 0x00, Access::ReadOnly },  // drive fail status
   { 0x29, 0x00, Access::Lockable },  // fan interrupt enable
   { 0x2A, 0x00, Access::Lockable },  // PWM polarity
   { 0x2B, 0x00, Access::Lockable },  // PWM output
   { 0x2C, 0x00, Access::Lockable },  // PWM base frequency of fans 4 and 5
   { 0x2D, 0x00, Access::Lockable },  // of fans 1 to 3
   { 0xEF, 0x00, Access::ReadWrite }, // software lock
   { 0xFC, 0x0D, Access::ReadOnly },  // product features
   { 0xFD, 0x34, Access::ReadOnly },  // product id
   { 0xFE, 0x5D, Access::ReadOnly },  // manufacturer id
   { 0xFF, 0x80, Access::ReadOnly },  // revision
};

// Registers of a channel, relative to 0x30 + 0x10 * channel.
enum Offset : uint8_t {
   Setting = 0x0,
   Config1 = 0x2,
   TargetLow = 0xC,
   TargetHigh = 0xD,
   TachHigh = 0xE,
   TachLow = 0xF
};
constexpr Row perChannel[] = {
   { Setting, 0x00, Access::ReadWrite },    { 0x1, 0x01, Access::Lockable }, // PWM divide
   { Config1, 0x2B, Access::Lockable },     { 0x3, 0x28, Access::Lockable }, // configuration 2
   { 0x5, 0x2A, Access::Lockable },                                          // gain
   { 0x6, 0x19, Access::Lockable },                                          // spin up
   { 0x7, 0x10, Access::Lockable },                                          // max step
   { 0x8, 0x66, Access::Lockable },                                          // minimum drive
   { 0x9, 0xF5, Access::Lockable },                                          // valid tach count
   { 0xA, 0x00, Access::ReadWrite },                                         // drive fail band
   { 0xB, 0x00, Access::ReadWrite },        { TargetLow, 0xF8, Access::ReadWrite },
   { TargetHigh, 0xFF, Access::ReadWrite }, { TachHigh, 0xFF, Access::ReadOnly },
   { TachLow, 0xF8, Access::ReadOnly },
};
constexpr uint8_t validTachCount = 0x9;

constexpr uint8_t closedLoop = 0x80;  // configuration 1, bit 7
constexpr unsigned maxCount = 0x1FFF; // thirteen bits
constexpr double tachClock = 32768;   // Hz
constexpr double poles = 2;           // of the rotors

constexpr uint8_t registerOf( unsigned channel, uint8_t offset ) {
   return static_cast<uint8_t>( 0x30 + 0x10 * channel + offset );
}
static_assert( registerOf( 2, TachHigh ) == 0x5E && registerOf( 4, TachLow ) == 0x7F );

constexpr bool isChannels( uint8_t address ) { return address >= 0x30 && address < 0x80; }
constexpr unsigned channelOf( uint8_t address ) { return ( address >> 4 ) - 3u; }

std::optional<Row> rowOf( uint8_t address ) {
   const auto find = [&]( const auto &rows, uint8_t wanted ) -> std::optional<Row> {
      const auto found = std::find_if( std::begin( rows ), std::end( rows ),
                                       [&]( const Row &row ) { return row.address == wanted; } );
      return found == std::end( rows ) ? std::nullopt : std::optional( *found );
   };
   return isChannels( address ) ? find( perChannel, address & 0x0F ) : find( common, address );
}

} // namespace

EMC2305::EMC2305( std::string name, const Bus::Clock &clock, std::vector<Rotor> rotors )
   : Chip( std::move( name ) ) {
   constexpr std::chrono::milliseconds inertia( 800 ); // of a rotor of this size
   for ( Rotor &rotor : rotors )
      rotors_.push_back( { std::move( rotor ), Inertia( clock, inertia ) } );
   reset();
   for ( RotorState &state : rotors_ ) // the rotors have reached their speed
      state.rpm.valueIs( state.rpm.target() );
}

void EMC2305::reset() {
   pointer_ = 0;
   registers_ = {};
   for ( const Row &row : common )
      registers_[row.address] = row.powerOn;
   for ( unsigned channel = 0; channel < channels; ++channel ) {
      for ( const Row &row : perChannel )
         registers_[registerOf( channel, row.address )] = row.powerOn;
      if ( channel < rotors_.size() ) {
         registers_[registerOf( channel, Setting )] = rotors_[channel].rotor.bootDrive;
         updateTarget( channel );
      }
   }
}

void EMC2305::powerLost() {
   for ( RotorState &state : rotors_ )
      state.rpm.targetIs( 0 );
}

// In closed loop the chip itself controls the drive, for the speed in its target registers.
double EMC2305::targetRpm( unsigned channel ) const {
   const double most = rotors_[channel].rotor.maxRpm;
   if ( !( registers_[registerOf( channel, Config1 )] & closedLoop ) )
      return most * registers_[registerOf( channel, Setting )] / 255;
   const unsigned wanted = registers_[registerOf( channel, TargetHigh )] << 5 |
                           registers_[registerOf( channel, TargetLow )] >> 3;
   return wanted == 0 ? most : std::min( most, rpmTimesCount( channel ) / wanted );
}

double EMC2305::driveShare( unsigned channel ) const {
   return targetRpm( channel ) / rotors_[channel].rotor.maxRpm;
}

void EMC2305::updateTarget( unsigned channel ) {
   RotorState &state = rotors_[channel];
   if ( state.stalled || !state.seated )
      state.rpm.valueIs( 0 );
   else
      state.rpm.targetIs( targetRpm( channel ) );
}

void EMC2305::stalledIs( unsigned channel, bool stalled ) {
   rotors_[channel].stalled = stalled;
   updateTarget( channel );
}

void EMC2305::seatedIs( unsigned channel, bool seated ) {
   rotors_[channel].seated = seated;
   updateTarget( channel );
}

// Speed times count: 3,932,160 with two poles, five edges and multiplier 1.
double EMC2305::rpmTimesCount( unsigned channel ) const {
   const uint8_t config1 = registers_[registerOf( channel, Config1 )];
   const unsigned edges = 3 + 2 * ( config1 >> 3 & 3 );
   const unsigned multiplier = 1u << ( config1 >> 5 & 3 );
   return 60 * tachClock * ( edges - 1 ) * multiplier / poles;
}

unsigned EMC2305::count( unsigned channel ) const {
   const double turning = channel < rotors_.size() ? rpm( channel ) : 0;
   if ( turning * maxCount <= rpmTimesCount( channel ) )
      return maxCount; // too slow to measure, or stopped
   return static_cast<unsigned>( std::lround( rpmTimesCount( channel ) / turning ) );
}

bool EMC2305::writable( uint8_t address ) const {
   const auto row = rowOf( address );
   if ( !row || row->access == Access::ReadOnly )
      return false;
   if ( isChannels( address ) && ( address & 0x0F ) == Setting )
      return !( registers_[address | Config1] & closedLoop );
   return row->access == Access::ReadWrite || !( registers_[softwareLock] & 1 );
}

uint8_t EMC2305::at( uint8_t address ) const {
   if ( address == stallStatus ) {
      uint8_t stalled = 0;
      for ( unsigned channel = 0; channel < rotors_.size(); ++channel ) {
         const bool slow =
            count( channel ) >> 5 > registers_[registerOf( channel, validTachCount )];
         stalled |= static_cast<uint8_t>( ( slow && driveShare( channel ) > 0 ) << channel );
      }
      return stalled;
   }
   if ( isChannels( address ) ) {
      const unsigned channel = channelOf( address );
      if ( ( address & 0x0F ) == TachHigh )
         return static_cast<uint8_t>( count( channel ) >> 5 );
      if ( ( address & 0x0F ) == TachLow )
         return static_cast<uint8_t>( count( channel ) << 3 );
      if ( ( address & 0x0F ) == Setting && channel < rotors_.size() )
         return static_cast<uint8_t>( std::lround( driveShare( channel ) * 255 ) );
   }
   return registers_[address];
}

std::vector<Quantity> EMC2305::quantities() {
   std::vector<Quantity> all;
   for ( unsigned channel = 0; channel < rotors_.size(); ++channel ) {
      const std::string &rotor = rotors_[channel].rotor.name;
      all.push_back( { rotor + " rpm", "rpm", [=, this] { return rpm( channel ); } } );
      all.push_back( { rotor + " drive", "%", [=, this] { return driveShare( channel ) * 100; } } );
      all.push_back( { rotor + " stalled", "", [=, this] { return rotors_[channel].stalled; },
                       [=, this]( double on ) { stalledIs( channel, on != 0 ); } } );
      all.push_back( { rotor + " seated", "", [=, this] { return rotors_[channel].seated; },
                       [=, this]( double on ) { seatedIs( channel, on != 0 ); } } );
   }
   return all;
}

bool EMC2305::command( uint32_t command ) {
   pointer_ = static_cast<uint8_t>( command );
   return true;
}

bool EMC2305::write( uint8_t byte ) {
   const uint8_t address = pointer_++;
   if ( writable( address ) ) {
      registers_[address] = byte;
      if ( isChannels( address ) && channelOf( address ) < rotors_.size() )
         updateTarget( channelOf( address ) );
   }
   return true;
}

uint8_t EMC2305::read() { return at( pointer_++ ); }

ChipKind emc2305Kind() {
   const EntryKey rotor = object(
      "", "",
      { text( "name", "For people; the names of its quantities begin with it.", 64 ),
        number( "maxRpm", "At full drive.", 1, 100000 ),
        integer( "bootDrive", "What the board's boot code leaves in the setting register, of 255.",
                 0, 255 ) } );
   return { .name = "EMC2305",
            .description = "A controller of five fans, with its rotors.",
            .settings = { list( "rotors", "On its channels, the first one first.", rotor, 0,
                                EMC2305::channels ) },
            .settable = { ".+ (stalled|seated)" },
            .make = []( const ChipEntry &entry ) -> std::unique_ptr<Chip> {
               std::vector<EMC2305::Rotor> rotors;
               for ( const auto &each : entry.find( "rotors" )->elements() )
                  rotors.push_back( { *each.textOf( "name" ), *each.numberOf( "maxRpm" ),
                                      static_cast<uint8_t>( *each.unsignedOf( "bootDrive" ) ) } );
               return std::make_unique<EMC2305>( entry.name(), entry.around.clock,
                                                 std::move( rotors ) );
            } };
}

} // namespace Simulator
