#include "simulator/board/ChipKinds.h"
#include "ManualClock.h"
#include "boardfiles/Finding.h"
#include "boardfiles/Pattern.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace SimulatorTest {

namespace {

using namespace Simulator;

std::string sample( const EntryKey &key );

std::string samples( const std::vector<EntryKey> &keys ) {
   std::string members;
   for ( const EntryKey &each : keys )
      members +=
         fmt::format( "{}\"{}\": {}", members.empty() ? "" : ", ", each.key, sample( each ) );
   return "{ " + members + " }";
}

// A value that the key can have, as JSON.
std::string sample( const EntryKey &key ) {
   switch ( key.type ) {
   case EntryKey::Type::Number:
   case EntryKey::Type::Integer:
      return fmt::format( "{}", key.least );
   case EntryKey::Type::Text:
      return "\"1\"";
   case EntryKey::Type::Choice:
      return '"' + key.choices.at( 0 ) + '"';
   case EntryKey::Type::List: {
      std::string elements = sample( key.parts.at( 0 ) );
      for ( unsigned i = 1; i < key.minItems; ++i )
         elements += ", " + sample( key.parts[0] );
      return "[ " + elements + " ]";
   }
   case EntryKey::Type::Object:
      return samples( key.parts );
   }
   return "";
}

class ChipKindsTest : public ::testing::Test {
 protected:
   // A chip with all the settings of its kind.
   std::unique_ptr<Chip> make( const ChipKind &kind ) {
      BoardFiles::Findings findings;
      auto settings = BoardFiles::parseJson( samples( kind.settings ), kind.name, findings );
      BoardFiles::throwErrors( findings );
      return makeChip(
         { .did = 1, .name = "u1", .kind = kind.name, .settings = std::move( *settings ) },
         surroundings );
   }

   TestSupport::ManualClock clock;
   const Surroundings surroundings{
      .clock = clock, .address = 0x40, .powerCycle = [] {}, .powerOff = [] {}
   };
};

TEST_F( ChipKindsTest, TellWhatCanBeSet ) {
   for ( const ChipKind &kind : chipKinds() ) {
      const auto chip = make( kind );
      for ( const Quantity &quantity : chip->quantities() ) {
         const bool listed =
            std::any_of( kind.settable.begin(), kind.settable.end(), [&]( const auto &pattern ) {
               return BoardFiles::matchesWhole( quantity.name, pattern );
            } );
         EXPECT_EQ( listed, bool( quantity.set ) )
            << kind.name << ' ' << quantity.name
            << ": its kind's \"settable\" has to list what can be set, and nothing else";
      }
      for ( const std::string &pattern : kind.settable ) {
         const auto quantities = chip->quantities();
         EXPECT_TRUE( std::any_of(
            quantities.begin(), quantities.end(),
            [&]( const auto &each ) { return BoardFiles::matchesWhole( each.name, pattern ); } ) )
            << kind.name << " has no quantity " << pattern
            << ", which its kind's \"settable\" lists";
      }
   }
}

} // namespace

} // namespace SimulatorTest
