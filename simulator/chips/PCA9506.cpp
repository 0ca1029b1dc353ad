#include "simulator/chips/PCA9506.h"

#include <algorithm>

namespace Simulator {

namespace {

constexpr uint8_t autoIncrement = 0x80;
constexpr uint8_t powerOnCommand = 0x80;

} // namespace

void PCA9506::reset() {
   registers_ = {};
   registers_[Configuration].fill( 0xFF ); // all inputs
   registers_[Mask].fill( 0xFF );
   command_ = powerOnCommand;
   written_ = false;
}

bool PCA9506::drives( unsigned pin ) const {
   return !( registers_[Configuration][pin / 8] >> pin % 8 & 1 );
}

bool PCA9506::level( unsigned pin ) const {
   return drives( pin ) ? outputBit( pin ) : driven_[pin].value_or( pulls_[pin] );
}

void PCA9506::onHigh( std::vector<unsigned> together, std::function<void()> action ) {
   watched_ = std::move( together );
   action_ = std::move( action );
}

std::vector<Quantity> PCA9506::quantities() {
   std::vector<Quantity> all;
   for ( unsigned pin = 0; pin < pins; ++pin ) {
      all.push_back( { "pin" + std::to_string( pin ), "", [=, this] { return level( pin ); },
                       [=, this]( double level ) { drivenIs( pin, level != 0 ); } } );
   }
   return all;
}

bool PCA9506::addressed( Direction ) {
   written_ = false;
   return true;
}

bool PCA9506::command( uint32_t command ) {
   const uint8_t address = command & 0x7F;
   if ( address / 8 >= Groups || address % 8 >= banks )
      return false;
   command_ = static_cast<uint8_t>( command );
   return true;
}

void PCA9506::advance() {
   if ( !( command_ & autoIncrement ) )
      return;
   const uint8_t bank = command_ % 8;
   command_ = static_cast<uint8_t>( command_ - bank + ( bank + 1 ) % banks );
}

bool PCA9506::write( uint8_t byte ) {
   const auto group = static_cast<Group>( ( command_ & 0x7F ) / 8 );
   if ( group != Input ) // read-only: acknowledged, ignored
      registers_[group][command_ % 8] = byte;
   written_ = true;
   advance();
   return true;
}

uint8_t PCA9506::inputs( unsigned bank ) const {
   uint8_t levels = 0;
   for ( unsigned bit = 0; bit < 8; ++bit )
      levels |= static_cast<uint8_t>( level( 8 * bank + bit ) << bit );
   return levels ^ registers_[Polarity][bank];
}

uint8_t PCA9506::read() {
   const auto group = static_cast<Group>( ( command_ & 0x7F ) / 8 );
   const unsigned bank = command_ % 8;
   const uint8_t byte = group == Input ? inputs( bank ) : registers_[group][bank];
   advance();
   return byte;
}

void PCA9506::stopped() {
   if ( std::exchange( written_, false ) && action_ &&
        std::all_of( watched_.begin(), watched_.end(),
                     [this]( unsigned pin ) { return drives( pin ) && outputBit( pin ); } ) )
      action_();
}

ChipKind pca9506Kind() {
   const EntryKey pin = integer( "", "A pin.", 0, PCA9506::pins - 1 );
   return {
      .name = "PCA9506",
      .description = "An expander of 40 pins.",
      .settings = { list( "pullDown", "Pins that are pulled down; the others are pulled up.", pin )
                       .optional(),
                    list( "powerOff",
                          "Pins that turn the board off when all of them are driven high.", pin, 1 )
                       .optional() },
      .settable = { "pin[0-9]+" },
      .make = []( const ChipEntry &entry ) -> std::unique_ptr<Chip> {
         auto chip = std::make_unique<PCA9506>( entry.name() );
         for ( const unsigned each : entry.numbers( "pullDown" ) )
            chip->pullIs( each, false );
         if ( entry.find( "powerOff" ) )
            chip->onHigh( entry.numbers( "powerOff" ), entry.around.powerOff );
         return chip;
      }
   };
}

} // namespace Simulator
