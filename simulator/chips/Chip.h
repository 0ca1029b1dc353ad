#pragma once

#include "simulator/chips/Faults.h"
#include "simulator/chips/Quantity.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Simulator {

enum class Direction : uint8_t { Write = 0, Read = 1 }; // the bit after the address

// A chip as the bus sees it. The bus calls addressed() at the start and at each repeated start,
// then command(), write() or read() for each byte, and stopped() at the stop. A bool result is the
// acknowledge.
class Chip {
 public:
   explicit Chip( std::string name ) : name_( std::move( name ) ) {}
   virtual ~Chip() = default;
   Chip( const Chip & ) = delete;
   Chip &operator=( const Chip & ) = delete;

   // The controls. A chip that is absent or without power does not answer. Afterwards it starts as
   // after power-on.
   const std::string &name() const { return name_; }
   bool present() const { return present_; }
   void presentIs( bool present ) {
      if ( present && !present_ )
         reset();
      present_ = present;
   }
   void poweredIs( bool powered ) {
      if ( powered == powered_ )
         return;
      powered_ = powered;
      powered ? reset() : powerLost();
   }
   bool answers() const { return present_ && powered_; }
   const Faults &faults() const { return faults_; }
   void faultsAre( const Faults &faults ) {
      faults_ = faults;
      transfers_ = 0;
   }
   // Lets go of the data line.
   void letsGo() { faults_.stuck = Stuck::No; }
   // Whether a fault makes the chip nack its address in the transfer that begins now; counts it.
   bool nacks() { return faults_.nacks > 0 && transfers_++ % faults_.outOf < faults_.nacks; }
   virtual void reset() = 0;   // power on
   virtual void powerLost() {} // its rotors slow down
   virtual std::vector<Quantity> quantities() { return {}; }

   // The bus. command() gets the whole command, which has commandBytes() bytes on the bus.
   virtual unsigned commandBytes() const { return 1; }
   virtual bool addressed( Direction ) { return true; }
   // The same for a chip with several addresses.
   virtual bool addressedAt( uint8_t, Direction direction ) { return addressed( direction ); }
   virtual bool command( uint32_t ) = 0;
   virtual bool write( uint8_t ) = 0;
   virtual uint8_t read() = 0;
   virtual void stopped() {}

 private:
   const std::string name_;
   bool present_ = true;
   bool powered_ = true;
   Faults faults_;
   unsigned transfers_ = 0; // counted for nacks()
};

} // namespace Simulator
