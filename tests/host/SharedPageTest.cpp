#include "host/plugin/SharedPage.h"

#include <cstring>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

namespace Host {
namespace {

using Time = SharedPage::Time;
using namespace std::chrono_literals;

// The page as its two processes see it, each with a mapping of its own.
class SharedPageTest : public ::testing::Test {
 protected:
   SharedPage parent;
   SharedPage child{ ::dup( parent.descriptor() ) };
};

TEST_F( SharedPageTest, TellsTheOperationThatRunsAndSinceWhen ) {
   EXPECT_FALSE( parent.operation() );
   child.operationBegins( "pl_temp_sensor_init", Time( 5s ) );
   EXPECT_EQ( parent.operation().value().name, "pl_temp_sensor_init" );
   EXPECT_EQ( parent.operation().value().since, Time( 5s ) );
   child.operationBegins( "speed", Time( 6s ) );
   EXPECT_EQ( parent.operation().value().name, "speed" );
   child.operationEnds();
   EXPECT_FALSE( parent.operation() );
}

TEST_F( SharedPageTest, CutsANameThatIsTooLong ) {
   child.operationBegins( std::string( 1000, 'x' ), Time( 1s ) );
   EXPECT_EQ( parent.operation().value().name, std::string( 64, 'x' ) );
}

TEST_F( SharedPageTest, HoldsWhatWasNotSent ) {
   EXPECT_EQ( parent.unsent(), "" );
   EXPECT_TRUE( child.keep( "one " ) );
   EXPECT_TRUE( child.keep( "two" ) );
   EXPECT_EQ( parent.unsent(), "one two" );
   EXPECT_EQ( child.take(), "one two" );
   EXPECT_EQ( parent.unsent(), "" );
}

TEST_F( SharedPageTest, RefusesWhatDoesNotFitAndKeepsTheRest ) {
   EXPECT_TRUE( child.keep( "first" ) );
   EXPECT_FALSE( child.keep( std::string( 60000, 'x' ) ) );
   EXPECT_EQ( child.take(), "first" );
   EXPECT_TRUE( child.keep( std::string( 60000, 'x' ) ) );
   EXPECT_FALSE( child.keep( "y" ) );
}

TEST_F( SharedPageTest, IsReadWithoutHarmAfterAPluginHasOverwrittenIt ) {
   constexpr size_t part = 4096;
   void *memory =
      ::mmap( nullptr, part, PROT_READ | PROT_WRITE, MAP_SHARED, parent.descriptor(), 0 );
   ASSERT_NE( memory, MAP_FAILED );
   std::memset( memory, 0xFF, part );
   ::munmap( memory, part );
   EXPECT_EQ( parent.operation().value().name, std::string( 64, '\xFF' ) );
   EXPECT_EQ( parent.unsent().size(), 60000u );
}

} // namespace
} // namespace Host
