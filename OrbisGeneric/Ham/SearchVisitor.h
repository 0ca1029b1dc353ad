// Finds a component or a device in the topology, and the type of access method of its medium.
#pragma once

#include "OrbisGeneric/TopologyVisitor.h"

namespace Ham {

// A component is found in any device. The device id is compared only when the component id is
// Drivers::noComponent.
class SearchVisitor : public Topology::TopologyVisitor {
 public:
   SearchVisitor( uint32_t wantedUid, uint32_t wantedDid ) : uid( wantedUid ), did( wantedDid ) {}

   using TopologyVisitor::visit;
   bool visit( Topology::Component const *c ) override;
   bool visit( Topology::Device const *d ) override;
   bool visit( Topology::Mux const *m ) override;
   bool visit( Topology::Bus const *b ) override;
   bool visit( Topology::Accelerator const *a ) override;
   bool visit( Topology::SCD const *medium ) override;
   bool visit( Topology::I2C const *medium ) override;
   bool visit( Topology::IOPort const *medium ) override;
   bool visit( Topology::Celestica const *medium ) override;

   uint32_t uid;
   uint32_t did;
   bool found = false;
   Topology::Device const *device = nullptr;
   std::string ham;
};

} // namespace Ham
