#pragma once

#include "simulator/chips/Faults.h"
#include "simulator/chips/Quantity.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Simulator {

enum class Direction : uint8_t { Write = 0, Read = 1 }; // as the bit behind the address

// A chip as its two bus pins show it. Between start and stop the bus calls addressed() at the
// start and at each repeated start, then command(), write() or read() a byte at a time. Where a
// bool comes back it is the acknowledge.
class Chip {
 public:
   explicit Chip( std::string name ) : name_( std::move( name ) ) {}
   virtual ~Chip() = default;
   Chip( const Chip & ) = delete;
   Chip &operator=( const Chip & ) = delete;

   // The bench's side. A chip that isn't present or has no power answers nothing; with both again
   // it has just powered up.
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
   // Whether a fault makes the chip nack its address in the transfer that begins now; counts it.
   bool nacks() { return faults_.nacks > 0 && transfers_++ % faults_.outOf < faults_.nacks; }
   virtual void reset() = 0;   // power on
   virtual void powerLost() {} // what it drives runs down
   virtual std::vector<Quantity> quantities() { return {}; }

   // The bus's side. The command comes whole; on the wires it takes commandBytes().
   virtual unsigned commandBytes() const { return 1; }
   virtual bool addressed( Direction ) { return true; }
   virtual bool command( uint32_t ) = 0;
   virtual bool write( uint8_t ) = 0;
   virtual uint8_t read() = 0;
   virtual void stopped() {}

 private:
   const std::string name_;
   bool present_ = true;
   bool powered_ = true;
   Faults faults_;
   unsigned transfers_ = 0; // that the faults have counted
};

} // namespace Simulator
