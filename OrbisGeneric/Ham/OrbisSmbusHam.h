// The access method that uses the SMBus server. A batch is one transaction: first the selections of
// the muxes on the path to the device, then the requests, then the releases of the muxes.
#pragma once

#include "OrbisGeneric/AhamAddress.h"
#include "OrbisGeneric/Ham/Ham.h"
#include "OrbisGeneric/TopologyVisitor.h"
#include "OrbisUtil/Smbus.pb.h"

#include <vector>

namespace Component::LogicalDevice {
class Mux;
}

namespace Ham {

constexpr Ham::ResponseId INVALID_RESPONSE_ID = 0xFFFFFFFF;

class OrbisSmbusHam : public Ham {
 public:
   // The factory of "OrbisSmbus". Null when the component or device of args is not in the topology.
   static Ham *create( Topology::Topology const &topology, Drivers::DriverArgs const &args );

   void init() override;
   void prepare() override;
   // 4: the server can't be reached or is too slow. 6: the server answers with a failure, or its
   // answer is incomplete. Always call prepare() first: a second run of the same batch would send
   // the mux releases twice.
   pl_status execute() override;

   ResponseId addRecvByte() override;
   ResponseId addRead8( unsigned reg ) override;
   ResponseId addRead16( unsigned reg ) override;
   ResponseId addRead( unsigned reg, unsigned len ) override;
   ResponseId addReadBlock( unsigned reg ) override;
   // A write uses up an id but returns INVALID_RESPONSE_ID: it has no result.
   ResponseId addSendByte( uint8_t value, bool pec ) override;
   ResponseId addWrite8( unsigned reg, uint8_t value, bool pec ) override;
   ResponseId addWrite16( unsigned reg, uint16_t value, bool pec ) override;
   ResponseId addWrite( unsigned reg, void const *data, unsigned len, bool pec ) override;
   ResponseId addWriteBlock( unsigned reg, void const *data, unsigned len, bool pec ) override;
   ResponseId addProcessCall( unsigned reg, uint16_t value ) override;

   uint8_t get8( ResponseId idx ) override;
   uint16_t get16( ResponseId idx ) override;
   std::string getBlock( ResponseId idx, unsigned len ) override;

   // Changes only the 7-bit device address, to send requests to the mux chips of the path.
   virtual void setAddress( uint8_t deviceAddress );
   virtual uint8_t getAddress() const;

   // Mux selections at the start of request_. They are kept from batch to batch.
   uint32_t prepareRequestCount_ = 0;
   uint32_t lastResponseId = 0;
   AhamAddress address{};
   uint32_t pci = 0;
   Smbus::TransactionRequest request_;
   Smbus::TransactionResponse response_;
   Smbus::MasterType masterType = Smbus::MASTER_SIMULATED;
   std::vector<Component::LogicalDevice::Mux *> muxes_; // outermost first; not owned

 private:
   Smbus::Request *queue( unsigned reg, Smbus::RequestType type, unsigned length, bool pec );
   ResponseId queueRead( unsigned reg, Smbus::RequestType type, unsigned length );
   ResponseId queueWrite( unsigned reg, Smbus::RequestType type, void const *data, unsigned length,
                          bool pec );
   void aimAt( Component::LogicalDevice::Mux const &mux );
   const std::string &dataOf( ResponseId idx ) const;
};

// Walks from a device up to the root of the topology and collects its SMBus address and its muxes.
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
   bool active = false; // the device or component was found; until then all other nodes are ignored
   OrbisSmbusHam *ham = nullptr;
   uint32_t lastBusId = 0; // the channel of the next mux on the way up
};

} // namespace Ham
