// Faults in any order, one upon the other: each one that could be seen is told once, with the right
// cause, nothing else is told, and in the end all is clear. ORBIS_FAULT_SEQUENCES is how many.
#include "WatchedBoard.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <random>

namespace {

struct Fault {
   std::string cause;                   // as it is told
   std::vector<std::string> begin, end; // words of orbis-smbus sim
   std::vector<std::string> hiddenBy{}; // causes
   std::string supply{};                // that has to be told to forget it
};

const std::vector<Fault> faults{
   { "psu1 input lost",
     { "set", "psu1", "line", "0" },
     { "set", "psu1", "line", "230" },
     {},
     "psu1" },
   { "psu2-slot absent", { "pull", "psu2" }, { "insert", "psu2" } },
   { "fan3-inlet speed limit", { "stall", "fan3.inlet" }, { "free", "fan3.inlet" } },
   { "fan1-slot absent", { "pull", "fan1" }, { "insert", "fan1" } },
   { "multiplexer 0x70 on scd(4):1:2 silent", { "nack", "mux-main" }, { "clear", "mux-main" } },
   { "temp-rear silent",
     { "nack", "temp-rear" },
     { "clear", "temp-rear" },
     { "multiplexer 0x70 on scd(4):1:2 silent" } },
   { "temp-board silent", { "nack", "temp-board" }, { "clear", "temp-board" } },
   { "temp-cpu temperature limit",
     { "set", "temp-cpu", "temperature", "99" },
     { "set", "temp-cpu", "temperature", "47" } },
};

// More than a fault needs to be told, or to be known as gone: rotors turn up slowly.
constexpr int longEnough = 14;

class Sequence {
 public:
   explicit Sequence( unsigned seed ) : random_( seed ) {}

   void run() {
      for ( int step = 0; step < 8; ++step )
         toggle( random_() % faults.size() );
      for ( size_t i = 0; i < faults.size(); ++i )
         if ( active_[i] )
            toggle( i );
      check();
   }

 private:
   void toggle( size_t number ) {
      const Fault &fault = faults[number];
      active_[number] = !active_[number];
      board_.sim( active_[number] ? fault.begin : fault.end );
      if ( !active_[number] && !fault.supply.empty() )
         board_.clearFaults( fault.supply );
      history_ += fmt::format( "{} {}; ", active_[number] ? "begin" : "end", fault.cause );
      for ( int i = 0; i < longEnough; ++i )
         board_.round();
      for ( size_t i = 0; i < faults.size(); ++i ) {
         const bool isHidden = std::any_of( faults[i].hiddenBy.begin(), faults[i].hiddenBy.end(),
                                            [&]( const std::string &other ) {
                                               for ( size_t j = 0; j < faults.size(); ++j )
                                                  if ( faults[j].cause == other && active_[j] )
                                                     return true;
                                               return false;
                                            } );
         if ( active_[i] && !isHidden && !isOpen_[i] ) {
            isOpen_[i] = true;
            ++wanted_[faults[i].cause];
         }
         if ( !active_[i] && !isHidden )
            isOpen_[i] = false;
      }
   }

   void check() const {
      std::map<std::string, int> set, clear;
      for ( const std::string &event : board_.told() ) {
         const std::string rest = event.substr( event.find( ' ' ) + 1 );
         const std::string cause = rest.substr( 0, rest.find( ": " ) );
         if ( event.starts_with( "clear " ) )
            ++clear[cause];
         else if ( set[cause] == clear[cause] ) // else it has become worse or better
            ++set[cause];
      }
      EXPECT_EQ( set, wanted_ ) << history_;
      EXPECT_EQ( clear, wanted_ ) << history_;
      EXPECT_TRUE( board_.monitor().causes().empty() ) << history_;
   }

   std::mt19937 random_;
   WatchedBoard board_{ false }; // without modules, since none of the faults is theirs
   std::map<size_t, bool> active_, isOpen_;
   std::map<std::string, int> wanted_; // how often each cause has to be told
   std::string history_;
};

constexpr unsigned parts = 4; // that run beside each other

class FaultSequencesTest : public ::testing::TestWithParam<unsigned> {};

TEST_P( FaultSequencesTest, EachFaultIsToldOnceWithItsCauseAndNothingElse ) {
#ifdef ORBIS_SANITIZED
   constexpr unsigned usual = 4;
#else
   constexpr unsigned usual = 20;
#endif
   const char *asked = std::getenv( "ORBIS_FAULT_SEQUENCES" );
   const unsigned count = asked ? static_cast<unsigned>( std::atoi( asked ) ) : usual;
   for ( unsigned seed = GetParam(); seed < count && !HasFailure(); seed += parts ) {
      SCOPED_TRACE( fmt::format( "sequence {}", seed ) );
      Sequence( seed ).run();
   }
}

INSTANTIATE_TEST_SUITE_P( Part, FaultSequencesTest, ::testing::Range( 0u, parts ) );

} // namespace
