// Visitors of the topology.
#pragma once

#include "OrbisGeneric/Topology.h"

namespace Topology {

// visit returns true to continue the walk, false to stop it: the node was found. Visitors are not
// deleted through this class.
class TopologyVisitor {
 public:
   virtual bool visit( Component const * ) { return true; }
   virtual bool visit( Device const * ) { return true; }
   virtual bool visit( Mux const * ) { return true; }
   virtual bool visit( Bus const * ) { return true; }
   virtual bool visit( Accelerator const * ) { return true; }
   virtual bool visit( SCD const * ) { return true; }
   virtual bool visit( I2C const * ) { return true; }
   virtual bool visit( IOPort const * ) { return true; }
   virtual bool visit( Celestica const * ) { return true; }
   virtual bool visit( Topology const * ) { return true; }
};

// Stops at the first device with the wanted id.
class SearchDeviceVisitor : public TopologyVisitor {
 public:
   explicit SearchDeviceVisitor( uint32_t wantedDid ) : did( wantedDid ) {}
   using TopologyVisitor::visit;
   bool visit( Device const *d ) override;

   uint32_t did;
   bool found = false;
   Device const *device = nullptr;
};

} // namespace Topology
