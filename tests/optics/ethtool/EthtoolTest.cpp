// Our decoder beside Debian's ethtool, which was written by others.
#include "Comparison.h"
#include "RandomModules.h"

#include <cstdlib>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace OpticsTest {

namespace {

using namespace Optics;
using ::testing::IsEmpty;
using ::testing::Not;

class EthtoolTest : public testing::Test {
 protected:
   void SetUp() override {
      if ( !isEthtoolThere() )
         GTEST_SKIP() << "ethtool isn't there: apt-get install ethtool";
   }

   // ORBIS_OPTICS_ETHTOOL images of each standard, from the number ORBIS_OPTICS_FIRST on. 256 have
   // each code once.
   static uint64_t numberIn( const char *variable, uint64_t otherwise ) {
      const char *text = std::getenv( variable );
      return text ? std::strtoull( text, nullptr, 10 ) : otherwise;
   }

   static void compareAll( Standard standard ) {
      const uint64_t first = numberIn( "ORBIS_OPTICS_FIRST", 0 );
      const uint64_t count = numberIn( "ORBIS_OPTICS_ETHTOOL", 256 );
      unsigned fields = 0;
      std::map<std::string, unsigned> differences;
      for ( uint64_t number = first; number < first + count; ++number ) {
         const Bytes file = randomModule( standard, number );
         Comparison comparison( file, standard );
         compare( comparison, ethtoolOn( file, standard ) );
         ASSERT_THAT( comparison.mistakes, IsEmpty() ) << "image " << number;
         fields += comparison.compared;
         for ( const auto &[reason, times] : comparison.differences )
            differences[reason] += times;
      }
      RecordProperty( "fields", static_cast<int>( fields ) );
      fmt::print( "{} images of {}, {} fields\n", count, nameOf( standard ), fields );
      for ( const auto &[reason, times] : differences )
         fmt::print( "{:6} {}\n", times, reason );
      EXPECT_GT( fields, count * 30 );
   }
};

TEST_F( EthtoolTest, AgreesOnSff8472 ) { compareAll( Standard::Sff8472 ); }

TEST_F( EthtoolTest, AgreesOnSff8636 ) { compareAll( Standard::Sff8636 ); }

TEST_F( EthtoolTest, AgreesOnCmis ) { compareAll( Standard::Cmis ); }

TEST_F( EthtoolTest, WouldShowAFieldThatDiffersAndALabelThatIsNew ) {
   const Bytes file = sfp();
   std::vector<Line> lines = ethtoolOn( file, Standard::Sff8472 );
   for ( Line &line : lines ) {
      const std::string value = line.value;
      line.value = "something else";
      Comparison comparison( file, Standard::Sff8472 );
      compare( comparison, lines );
      const bool isNotOurs =
         line.label == "Extended identifier" || line.label.starts_with( "BR margin" );
      EXPECT_EQ( comparison.mistakes.empty(), isNotOurs ) << line.label;
      line.value = value;
   }
   Comparison comparison( file, Standard::Sff8472 );
   compare( comparison, { { "New label", "1" } } );
   EXPECT_THAT( comparison.mistakes, Not( IsEmpty() ) );
}

} // namespace

} // namespace OpticsTest
