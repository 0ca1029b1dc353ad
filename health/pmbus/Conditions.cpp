#include "health/pmbus/Conditions.h"

#include "health/pmbus/Bits.h"

#include <algorithm>
#include <fmt/format.h>
#include <set>

namespace Health::Pmbus {

namespace {

using Kind = Condition::Kind;

bool stopsPower( const Condition &condition ) {
   return condition.kind == Kind::InputLost || condition.kind == Kind::OutputFailed;
}

uint16_t valueOf( const Registers &registers, uint8_t command ) {
   const auto found = registers.find( command );
   return found == registers.end() ? uint16_t{ 0 } : found->second;
}

void addDetails( std::vector<Condition> &all, const Registers &registers, uint8_t command ) {
   for ( const DetailBit &bit : detailBits() )
      if ( bit.command == command && ( valueOf( registers, command ) & bit.mask ) )
         all.push_back( { bit.kind, bit.level, std::string( bit.words ) } );
}

// Whether something else says why there is no output, or the register behind the bit says more.
bool isSaid( const SummaryBit &bit, const std::vector<Condition> &all,
             const Registers &registers ) {
   if ( bit.mask == offBit || bit.mask == powerNotGoodBit )
      return std::any_of( all.begin(), all.end(), stopsPower );
   return bit.detail && valueOf( registers, bit.detail );
}

} // namespace

std::vector<Condition> describe( const Registers &registers ) {
   const uint16_t word = valueOf( registers, StatusWord );
   std::vector<Condition> all;
   for ( const uint8_t command : registersBehind( word ) )
      addDetails( all, registers, command );
   std::set<uint8_t>
      told; // registers of which a bit of the word has told, where they were not read
   for ( const SummaryBit &bit : summaryBits() ) {
      if ( !( word & bit.mask ) || isSaid( bit, all, registers ) )
         continue;
      if ( !bit.detail || told.insert( bit.detail ).second )
         all.push_back( { bit.kind, bit.level, std::string( bit.words ) } );
   }
   if ( !( word & ( offBit | powerNotGoodBit ) ) )
      for ( Condition &one : all )
         if ( stopsPower( one ) ) {
            one.level = Level::Warning;
            one.words += " (over)";
         }
   return all;
}

std::string sentence( const std::vector<Condition> &conditions ) {
   std::string text;
   for ( const Condition &condition : conditions )
      text += fmt::format( "{}{}", text.empty() ? "" : ", ", condition.words );
   return text.empty() ? "ok" : text;
}

} // namespace Health::Pmbus
