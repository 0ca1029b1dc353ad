#include "simulator/bus/Cycle.h"

#include "smbus/Pec.h"
#include "smbus/RootBus.h"

#include <fmt/format.h>

namespace Simulator {

Cycle::Cycle( const BusSegment &segment, uint8_t address, Chips &chips )
   : address_( address ), reachable_( chips.reachable ), answering_( chips.answering ) {
   reachable_.clear();
   answering_.clear();
   if ( const Chip *stuck = segment.findStuck() )
      throw BusFault( "the data line is held low by " + stuck->name() );
   segment.findReachable( address, reachable_ );
   std::erase_if( reachable_, []( Chip *chip ) { return chip->nacks(); } );
}

Cycle::~Cycle() {
   for ( Chip *chip : reachable_ )
      chip->stopped();
}

const Chip *Cycle::answering() const { return answering_.empty() ? nullptr : answering_.front(); }

void Cycle::count( uint8_t byte ) {
   pec_ = Bus::pecStep( pec_, byte );
   ++bytes_;
}

void Cycle::start( Direction direction ) {
   answering_.clear();
   for ( Chip *chip : reachable_ ) {
      if ( chip->addressedAt( address_, direction ) )
         answering_.push_back( chip );
   }
   if ( answering_.empty() ) {
      ++bytes_;
      throw BusFault( std::string( Bus::noAddressAcknowledge ) );
   }
   count( static_cast<uint8_t>( address_ << 1 | static_cast<uint8_t>( direction ) ) );
}

void Cycle::command( uint32_t command ) {
   const unsigned width = answering_.front()->commandBytes();
   if ( width < sizeof command && command >> 8 * width != 0 )
      throw BusFault( fmt::format( "{:#x} does not fit into the chip's command of {} byte{}",
                                   command, width, width == 1 ? "" : "s" ) );
   bool acknowledged = false;
   for ( Chip *chip : answering_ )
      acknowledged |= chip->command( command );
   if ( !acknowledged )
      throw BusFault( "no acknowledge of the command" );
   for ( unsigned left = width; left-- > 0; )
      count( static_cast<uint8_t>( command >> 8 * left ) );
}

bool Cycle::write( uint8_t byte ) {
   bool acknowledged = false;
   for ( Chip *chip : answering_ )
      acknowledged |= chip->write( byte );
   count( byte );
   return acknowledged;
}

uint8_t Cycle::read() {
   uint8_t byte = 0xFF;
   for ( Chip *chip : answering_ )
      byte &= chip->faults().allOnes ? 0xFF : chip->read();
   count( byte );
   return byte;
}

std::string Cycle::collision() const {
   if ( answering_.size() < 2 )
      return {};
   std::string text = "collision of " + answering_[0]->name();
   for ( size_t i = 1; i < answering_.size(); ++i )
      text += " and " + answering_[i]->name();
   return text;
}

} // namespace Simulator
