#include "simulator/board/Bench.h"

#include "boardfiles/Nearest.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

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
   std::vector<std::string> names;
   for ( const Seated &seated : chips_ ) {
      names.push_back( seated.chip->name() );
      if ( names.back() == name )
         return *seated.chip;
   }
   throw BenchError(
      fmt::format( "no chip is called {}{}", name, BoardFiles::didYouMean( name, names ) ) );
}

Quantity Bench::quantity( const std::string &whose, const std::string &name ) const {
   std::vector<std::string> known; // the quantities that it has
   std::vector<std::string> others;
   for ( const Seated &seated : chips_ ) {
      const bool itself = seated.chip->name() == whose;
      others.push_back( seated.chip->name() );
      for ( Quantity &each : seated.chip->quantities() ) {
         const bool part = each.name.starts_with( whose + " " );
         if ( !itself && !part )
            continue;
         const std::string its = part ? each.name.substr( whose.size() + 1 ) : each.name;
         if ( its == name )
            return std::move( each );
         if ( its.find( ' ' ) == its.npos ) // else it is a part's
            known.push_back( its );
      }
   }
   if ( known.empty() )
      throw BenchError( fmt::format( "nothing with values is called {}{}", whose,
                                     BoardFiles::didYouMean( whose, others ) ) );
   throw BenchError( fmt::format( "{} has no {}{}; it has {}", whose, name,
                                  BoardFiles::didYouMean( name, known ),
                                  fmt::join( known, ", " ) ) );
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
   std::vector<std::string> names;
   for ( Module &each : modules_ ) {
      names.push_back( each.name );
      if ( each.name == name )
         return each;
   }
   throw BenchError(
      fmt::format( "no module is called {}{}", name, BoardFiles::didYouMean( name, names ) ) );
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
