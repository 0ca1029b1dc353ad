#include "OrbisGeneric/Ham/OrbisSmbusVisitor.h"

#include "OrbisGeneric/Components/Device.h"
#include "OrbisGeneric/Components/Mux.h"
#include "OrbisGeneric/Drivers/Drivers.h"
#include "OrbisGeneric/Host.h"

#include <cassert>

namespace Ham {

Ham *OrbisSmbusHam::create( Topology::Topology const &topology, Drivers::DriverArgs const &args ) {
   OrbisSmbusVisitor path( &args );
   topology.accept( &path );
   return path.ham;
}

// Component ids are unique in the whole topology: the device is not compared.
bool OrbisSmbusVisitor::visit( Topology::Component const *c ) {
   if ( c->uid != args->uid )
      return true;
   active = true;
   return false;
}

bool OrbisSmbusVisitor::visit( Topology::Device const *d ) {
   if ( !active && ( args->uid != Drivers::noComponent || d->did != args->did ) )
      return true;
   active = true;
   ham = new OrbisSmbusHam;
   ham->address = args->address;
   ham->address.addrSize = 1; // requests always say 1, whatever the device's JSON says
   return false;
}

// The walk goes upward, so the bus nearest the root stays: the one the accelerator drives.
bool OrbisSmbusVisitor::visit( Topology::Bus const *b ) {
   if ( active ) {
      ham->address.bus = b->id & 0x7F;
      lastBusId = b->id;
   }
   return true;
}

bool OrbisSmbusVisitor::visit( Topology::Mux const *m ) {
   if ( !active )
      return true;
   PL_TRACE( 3, "Mux using device %u with value %u", m->did, lastBusId );
   const Topology::Device *topoDev = Topology::findDevice( m->did );
   assert( topoDev );
   if ( !topoDev->args )
      PL_TRACE( 3, "Device %u isn't declared inline", m->did );
   assert( topoDev->args );
   Drivers::DriverArgs muxArgs = *topoDev->args;
   auto *muxDevice = Component::HardwareDevice::create( muxArgs, nullptr );
   assert( muxDevice );
   ham->muxes_.insert( ham->muxes_.begin(), muxDevice->newMux( muxArgs, lastBusId ) );
   return true;
}

bool OrbisSmbusVisitor::visit( Topology::Accelerator const *a ) {
   if ( active )
      ham->address.accel = a->id & 0x7F;
   return true;
}

bool OrbisSmbusVisitor::visit( Topology::SCD const *medium ) {
   if ( active ) {
      ham->masterType = Smbus::MASTER_SCD;
      ham->pci = medium->pci;
   }
   return true;
}

bool OrbisSmbusVisitor::visit( Topology::I2C const *medium ) {
   if ( active )
      ham->masterType = medium->simulated ? Smbus::MASTER_SIMULATED : Smbus::MASTER_I2C;
   return true;
}

bool OrbisSmbusVisitor::visit( Topology::IOPort const * ) {
   if ( active )
      ham->masterType = Smbus::MASTER_IOPORT;
   return true;
}

bool OrbisSmbusVisitor::visit( Topology::Celestica const * ) {
   if ( active )
      ham->masterType = Smbus::MASTER_CELESTICA;
   return true;
}

} // namespace Ham
