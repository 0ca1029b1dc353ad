#include "OrbisGeneric/Ham/SearchVisitor.h"

#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/HostServices.h"

namespace Ham {

bool SearchVisitor::visit( Topology::Component const *c ) {
   if ( c->uid != uid )
      return true;
   PL_TRACE( 2, "Component %u found in tree", c->uid );
   found = true;
   return false;
}

bool SearchVisitor::visit( Topology::Device const *d ) {
   if ( !found && ( uid < Drivers::noComponent || d->did != did ) )
      return true;
   PL_TRACE( 2, "Device %u contain the component", d->did );
   found = true;
   device = d;
   return false;
}

// These act only on the ancestors of the node that was found. The walk ignores their results.

bool SearchVisitor::visit( Topology::Mux const *m ) {
   if ( found )
      PL_TRACE( 2, "Mux using device %d", static_cast<int>( m->did ) );
   return !found;
}

bool SearchVisitor::visit( Topology::Bus const *b ) {
   if ( found )
      PL_TRACE( 2, "BusId %u", b->id );
   return true;
}

bool SearchVisitor::visit( Topology::Accelerator const *a ) {
   if ( found )
      PL_TRACE( 2, "AccelId %u", a->id );
   return true;
}

bool SearchVisitor::visit( Topology::SCD const *medium ) {
   if ( found ) {
      PL_TRACE( 2, "SCD %u %08X", medium->unused, medium->pci );
      ham = medium->ham;
   }
   return true;
}

bool SearchVisitor::visit( Topology::I2C const *medium ) {
   if ( found ) {
      PL_TRACE( 2, "I2C bus %u", medium->bus->id );
      ham = medium->ham;
   }
   return true;
}

bool SearchVisitor::visit( Topology::IOPort const *medium ) {
   if ( found ) {
      PL_TRACE( 2, "IOPort" );
      ham = medium->ham;
   }
   return true;
}

bool SearchVisitor::visit( Topology::Celestica const *medium ) {
   if ( found ) {
      PL_TRACE( 2, "Celestica" );
      ham = medium->ham;
   }
   return true;
}

} // namespace Ham
