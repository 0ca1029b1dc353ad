#pragma once

#include "simulator/chips/Chip.h"

#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

namespace Simulator {

// What the bench can't do; the text says why.
struct BenchError : std::runtime_error {
   using std::runtime_error::runtime_error;
};

// The bench's side of a whole board: its chips, what can be pulled and inserted, and its power. All
// that touches chips, transfers among it, happens under the mutex, one thing at a time; the members
// here expect it to be held.
class Bench {
 public:
   struct Module {
      struct Set {
         Quantity quantity;
         double in;  // its value while the module is inserted
         double out; // and while it isn't
      };
      std::string name;
      std::vector<Chip *> chips;
      std::vector<Set> sets;
      bool present = true;
   };
   // A chip and its place. At one place only one chip can be present.
   struct Seated {
      std::unique_ptr<Chip> chip;
      std::string kind;
      const void *segment;
      uint8_t address;
   };

   // What has passed on all segments since the board was made.
   struct Traffic {
      uint64_t transfers = 0;
      uint64_t bytes = 0;
   };

   std::mutex &mutex() { return mutex_; }

   // Throws BenchError when another chip is present at the place.
   Chip &seat( Seated );
   // Takes its present or absent state to what it holds and sets.
   void add( Module );

   const std::vector<Seated> &chips() const { return chips_; }
   const std::vector<Module> &modules() const { return modules_; }

   // These throw BenchError for a name that is not there, and for what makes no sense now.
   Chip &chip( const std::string &name ) const;
   // Whose: a chip, or what a chip's quantities begin with.
   Quantity quantity( const std::string &whose, const std::string &name ) const;
   void quantityIs( const std::string &whose, const std::string &name, double value );
   void insert( const std::string &module );
   void pull( const std::string &module );

   // A transfer of so many bytes has passed.
   void count( unsigned bytes ) {
      ++traffic_.transfers;
      traffic_.bytes += bytes;
   }
   const Traffic &traffic() const { return traffic_; }

   // Without power no chip answers; with it again all have just powered up.
   bool powered() const { return powered_; }
   void powerIs( bool );
   void powerCycle();

 private:
   Module &module( const std::string &name );
   void freeFor( const Chip & ) const;
   static void apply( const Module & );

   std::mutex mutex_;
   std::vector<Seated> chips_;
   std::vector<Module> modules_;
   bool powered_ = true;
   Traffic traffic_;
};

} // namespace Simulator
