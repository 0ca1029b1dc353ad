#pragma once

#include "simulator/board/Bench.h"
#include "simulator/board/SimulationClock.h"
#include "smbus/Control.pb.h"

namespace Simulator {

// Does what the control socket's clients ask of a board and its clock, which outlive it.
class Controls {
 public:
   Controls( Bench &bench, SimulationClock &clock ) : bench_( bench ), clock_( clock ) {}

   // Everything but a trace, which is an empty response. If it fails, the error says why.
   SmbusControl::Response answer( const SmbusControl::Request & );

 private:
   void carryOut( const SmbusControl::Request &, SmbusControl::Response & );
   void step( double seconds );
   void describe( SmbusControl::State &, bool whole ) const;
   void addFault( const SmbusControl::Fault & );
   void addModuleFault( const SmbusControl::Fault &, const Chip &, Faults & ) const;
   void power( SmbusControl::Power );

   Bench &bench_;
   SimulationClock &clock_;
};

} // namespace Simulator
