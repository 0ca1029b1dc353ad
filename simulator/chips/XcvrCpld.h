#pragma once

#include "simulator/chips/ChipKind.h"
#include "simulator/chips/Cpld.h"
#include "simulator/chips/Pluggable.h"

#include <array>

namespace Simulator {

// A CPLD for the lines of transceiver cages, one bit for each line. Presence is 1 if a module is
// there. Interrupt and reset are active low, the others active high. Lines that the module would
// drive are pulled high without a module, and are read-only; the bench can drive them, too.
// Register 0x303 drives LEDs, which are off after power-on (1 is off).
class XcvrCpld final : public Cpld {
 public:
   // Cages whose lines are in the same four registers; the first cage has bit 0.
   struct Group {
      bool qsfp; // reset, low-power mode, presence, interrupt; of an SFP: loss of signal, TX
                 // disable, TX fault, presence
      unsigned cages;
      std::array<uint16_t, 4> registers;
   };
   using Groups = std::vector<Group>;
   static const Groups qsfpCpld; // 32 QSFP
   static const Groups sfpCpld;  // 48 SFP and 6 QSFP

   // Cages are named sfp1, sfp2 and so on; QSFP cages start with qsfp<firstQsfp>.
   XcvrCpld( std::string name, const Groups &, unsigned firstQsfp, const Registers &powerOn );

   // Lays the lines of a cage to a module that is or will be in it; it lives as long as the CPLD.
   // Throws std::out_of_range when there is no such cage.
   void connect( const std::string &cage, Pluggable & );

   void reset() override;
   std::vector<Quantity> quantities() override;

 private:
   enum Signal { Reset, LpMode, Presence, Interrupt, RxLos, TxDisable, TxFault };
   struct Line {
      std::string cage;
      Signal signal;
      uint16_t address;
      uint8_t mask;
   };
   struct Connection {
      const Line *line;
      Pluggable *module; // at its other end
   };

   static Registers powerOnOf( const Groups &, Registers scratch );
   void addCage( const std::string &cage, const Group &, unsigned bit );
   uint8_t levels( uint16_t address ) const;
   void lineIs( const Line &, bool level );
   bool isActive( const Line & ) const;
   void order( const std::string &cage, Pluggable & ) const;
   static bool drives( const Pluggable::Signals &, Signal );
   void presenceIs( const std::string &cage, bool present );
   void store( uint16_t address, uint8_t byte ) override;
   uint8_t at( uint16_t address ) const override;

   std::vector<Line> lines_;                         // complete from the start on
   std::multimap<uint16_t, Connection> connections_; // by the register of the line
   Registers inputs_; // levels of the lines from the cages, whatever the modules drive
};

ChipKind qsfpCpldKind();
ChipKind sfpCpldKind();

} // namespace Simulator
