#include "simulator/board/Bench.h"

#include <fmt/format.h>

#include <algorithm>

namespace Simulator {

Chip &Bench::seat( Seated seated ) {
   chips_.push_back( std::move( seated ) );
   Chip &chip = *chips_.back().chip;
   if ( chip.present() )
      freeFor( chip );
   return chip;
}

void Bench::freeFor( const Chip &chip ) const {
   const auto here = std::find_if( chips_.begin(), chips_.end(), [&]( const Seated &seated ) {
      return seated.chip.get() == &chip;
   } );
   for ( const Seated &other : chips_ ) {
      if ( other.segment == here->segment && other.address == here->address &&
           other.chip.get() != &chip && other.chip->present() )
         throw BenchError(
            fmt::format( "{} is already at this address of this bus", other.chip->name() ) );
   }
}

void Bench::add( Module module ) {
   apply( module );
   modules_.push_back( std::move( module ) );
}

void Bench::apply( const Module &module ) {
   for ( Chip *chip : module.chips )
      chip->presentIs( module.present );
   for ( const Module::Set &set : module.sets )
      set.quantity.set( module.present ? set.in : set.out );
}

Chip &Bench::chip( const std::string &name ) const {
   for ( const Seated &seated : chips_ ) {
      if ( seated.chip->name() == name )
         return *seated.chip;
   }
   throw BenchError( fmt::format( "no chip is called {}", name ) );
}

Quantity Bench::quantity( const std::string &whose, const std::string &name ) const {
   bool known = false;
   for ( const Seated &seated : chips_ ) {
      const bool itself = seated.chip->name() == whose;
      known |= itself;
      for ( Quantity &each : seated.chip->quantities() ) {
         const bool part = each.name.starts_with( whose + " " );
         known |= part;
         if ( ( itself && each.name == name ) || ( part && each.name == whose + " " + name ) )
            return std::move( each );
      }
   }
   throw BenchError( known ? fmt::format( "{} has no {}", whose, name )
                           : fmt::format( "nothing is called {}", whose ) );
}

void Bench::quantityIs( const std::string &whose, const std::string &name, double value ) {
   const Quantity found = quantity( whose, name );
   if ( !found.set )
      throw BenchError( fmt::format( "{} of {} follows from others", name, whose ) );
   if ( !( value >= found.least && value <= found.most ) )
      throw BenchError( fmt::format( "{} is not within {} to {} {}", value, found.least, found.most,
                                     found.unit ) );
   found.set( value );
}

Bench::Module &Bench::module( const std::string &name ) {
   const auto found = std::find_if( modules_.begin(), modules_.end(),
                                    [&]( const Module &each ) { return each.name == name; } );
   if ( found == modules_.end() )
      throw BenchError( fmt::format( "no module is called {}", name ) );
   return *found;
}

void Bench::insert( const std::string &name ) {
   Module &inserted = module( name );
   if ( inserted.present )
      throw BenchError( fmt::format( "{} is inserted already", name ) );
   for ( const Chip *chip : inserted.chips )
      freeFor( *chip );
   inserted.present = true;
   apply( inserted );
}

void Bench::pull( const std::string &name ) {
   Module &pulled = module( name );
   if ( !pulled.present )
      throw BenchError( fmt::format( "{} is not inserted", name ) );
   pulled.present = false;
   apply( pulled );
}

void Bench::powerIs( bool powered ) {
   powered_ = powered;
   for ( const Seated &seated : chips_ )
      seated.chip->poweredIs( powered );
}

void Bench::powerCycle() {
   powerIs( false );
   powerIs( true );
}

} // namespace Simulator
