// Walks from a device up to the root of the topology, gathering its SMBus address and muxes.
#pragma once

#include "OrbisGeneric/Ham/OrbisSmbusHam.h"
#include "OrbisGeneric/TopologyVisitor.h"

namespace Ham {

class OrbisSmbusVisitor : public Topology::TopologyVisitor {
 public:
   explicit OrbisSmbusVisitor( Drivers::DriverArgs const *wanted ) : args( wanted ) {}

   bool visit( Topology::Component const *c ) override;
   bool visit( Topology::Device const *d ) override;
   bool visit( Topology::Mux const *m ) override;
   bool visit( Topology::Bus const *b ) override;
   bool visit( Topology::Accelerator const *a ) override;
   bool visit( Topology::SCD const *medium ) override;
   bool visit( Topology::I2C const *medium ) override;
   bool visit( Topology::IOPort const *medium ) override;
   bool visit( Topology::Celestica const *medium ) override;
   bool visit( Topology::Topology const * ) override { return true; }

   Drivers::DriverArgs const *args;
   bool active = false; // the device or component is found; until then nothing else counts
   OrbisSmbusHam *ham = nullptr;
   uint32_t lastBusId = 0; // the channel below the next mux up
};

} // namespace Ham
