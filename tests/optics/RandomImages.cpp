#include "RandomImages.h"

#include "Facts.h"
#include "Images.h"
#include "optics/ReadPlan.h"

#include <cmath>
#include <fmt/format.h>

namespace OpticsTest {

using namespace Optics;

namespace {

// std::uniform_int_distribution gives other numbers in other libraries.
class Dice {
 public:
   explicit Dice( uint64_t seed ) : engine_( seed ) {}
   unsigned below( unsigned end ) { return static_cast<unsigned>( engine_() % end ); }
   uint8_t byte() { return static_cast<uint8_t>( below( 256 ) ); }

 private:
   std::mt19937_64 engine_;
};

Bytes moduleOf( Standard standard ) {
   switch ( standard ) {
   case Standard::Sff8472:
      return sfp();
   case Standard::Sff8636:
      return qsfp();
   case Standard::Cmis:
      return qsfpDd();
   }
   return {};
}

Bytes randomFile( Standard standard, Dice &dice ) {
   Bytes file = moduleOf( standard );
   const bool isModule = dice.below( 2 );
   if ( isModule ) {
      for ( unsigned i = dice.below( 40 ); i > 0; --i )
         file[dice.below( static_cast<unsigned>( file.size() ) )] = dice.byte();
      // A bit of these decides what many others mean.
      static constexpr size_t deciding[] = { 2, 8, 92, 129, 147, 220, page01OfCmis + 160 };
      file[deciding[dice.below( std::size( deciding ) )]] ^=
         static_cast<uint8_t>( 1 << dice.below( 8 ) );
   } else {
      for ( uint8_t &byte : file )
         byte = dice.byte();
   }
   return file;
}

void findNotFinite( const Monitor &monitor, std::vector<std::string> &wrong ) {
   const Thresholds &at = monitor.thresholds;
   for ( const auto &number :
         { monitor.value, at.highAlarm, at.lowAlarm, at.highWarning, at.lowWarning } )
      if ( number && !std::isfinite( *number ) )
         wrong.push_back(
            fmt::format( "a number of {} is {}", nameOf( monitor.quantity ), *number ) );
}

void findUnprintable( const Facts &facts, std::vector<std::string> &wrong ) {
   for ( const auto &[name, text] : facts )
      for ( const char letter : text )
         if ( letter < 0x20 || letter > 0x7E )
            wrong.push_back( fmt::format( "{} has the character {}", name, int( letter ) ) );
}

// What a reader would do: no block leaves its half of the memory, and reading them comes to an end.
void findWrongBlocks( const Image &all, std::vector<std::string> &wrong ) {
   const auto check = [&]( const Block &block ) {
      const unsigned start = block.region.upper ? 128 : 0;
      if ( block.size < 1 || block.first < start || block.first + block.size > start + 128 )
         wrong.push_back( fmt::format( "{} bytes at {} are asked for", block.size, block.first ) );
   };
   Image image;
   unsigned questions = 0;
   for ( std::vector<Block> blocks; !( blocks = identityBlocks( image ) ).empty(); ) {
      for ( const Block &block : blocks ) {
         check( block );
         for ( unsigned i = 0; i < block.size; ++i )
            image.put( block.region, block.first + i,
                       std::array{ all.byte( block.region, block.first + i ).value_or( 0 ) } );
      }
      if ( ++questions > 5 ) {
         wrong.emplace_back( "asking does not end" );
         return;
      }
   }
   for ( const Block &block : liveBlocks( image ) )
      check( block );
}

} // namespace

RandomImage randomImage( uint64_t number ) {
   Dice dice( number );
   const auto standard = static_cast<Standard>( dice.below( 3 ) );
   const Bytes file = randomFile( standard, dice );
   RandomImage image{ standard, {}, imageOfFile( file, standard ) };
   const unsigned holes = 1 + dice.below( 60 );
   for ( const auto &[region, bytes] : image.all.regions() )
      for ( unsigned i = 0; i < bytes.size(); ++i )
         if ( dice.below( 60 ) >= holes || dice.below( 2 ) )
            image.some.put( region, i + ( region.upper ? 128 : 0 ), std::array{ *bytes[i] } );
   return image;
}

std::vector<std::string> wrongIn( const RandomImage &image ) {
   const Module some = decode( image.some, image.standard );
   const Facts facts = factsOf( some );
   std::vector<std::string> wrong = notIn( factsOf( decode( image.all, image.standard ) ), facts );
   for ( const Monitor &monitor : some.monitors )
      findNotFinite( monitor, wrong );
   findUnprintable( facts, wrong );
   findWrongBlocks( image.all, wrong );
   return wrong;
}

} // namespace OpticsTest
