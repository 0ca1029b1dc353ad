// A hardware access method (Ham): how a driver talks to its chip. The driver queues requests into a
// batch, executes the batch, and gets each result by the id that the queue function returned.
#pragma once

#include "pl.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace Topology {
struct Topology;
}
namespace Drivers {
struct DriverArgs;
}

namespace Ham {

class Ham {
 public:
   // Identifies one request of the current batch.
   using ResponseId = uint32_t;

   uint32_t retryCount = 0;
   bool retryCountSet = false;

   virtual void init() {}
   // Starts a new batch. The ids of the last batch are no longer valid.
   virtual void prepare() = 0;
   // Runs the batch. Results may be fetched only after PL_STATUS_OK.
   virtual pl_status execute() = 0;

   // Each queues one request. An operation that a Ham does not support throws
   // NotImplementedException. The flag of a write turns packet error checking on.
   virtual ResponseId addRecvByte();
   virtual ResponseId addRead8( unsigned reg );
   virtual ResponseId addRead16( unsigned reg );
   virtual ResponseId addRead32( unsigned reg );
   virtual ResponseId addRead( unsigned reg, unsigned len );
   virtual ResponseId addReadBlock( unsigned reg );
   virtual ResponseId addSendByte( uint8_t value, bool flag );
   virtual ResponseId addWrite8( unsigned reg, uint8_t value, bool flag );
   virtual ResponseId addWrite16( unsigned reg, uint16_t value, bool flag );
   virtual ResponseId addWrite32( unsigned reg, uint32_t value, bool flag );
   virtual ResponseId addWrite( unsigned reg, void const *data, unsigned len, bool flag );
   virtual ResponseId addWriteBlock( unsigned reg, void const *data, unsigned len, bool flag );
   virtual ResponseId addProcessCall( unsigned reg, uint16_t value );

   // Words are low byte first. The len of getBlock is 0 when the device gives the count.
   virtual uint8_t get8( ResponseId id );
   virtual uint16_t get16( ResponseId id );
   virtual uint32_t get32( ResponseId id );
   virtual std::string getBlock( ResponseId id, unsigned len );

   // Each runs a batch of one request. On a failure the output is unchanged.
   pl_status recvByte( uint8_t *out );
   pl_status read8( unsigned reg, uint8_t *out );
   pl_status read16( unsigned reg, uint16_t *out );
   pl_status read32( unsigned reg, uint32_t *out );
   pl_status read( unsigned reg, unsigned len, std::string *out );
   pl_status readBlock( unsigned reg, std::string *out );
   pl_status processCall( unsigned reg, uint16_t value, uint16_t *out );
   pl_status sendByte( uint8_t value, bool flag );
   pl_status write8( unsigned reg, uint8_t value, bool flag );
   pl_status write16( unsigned reg, uint16_t value, bool flag );
   pl_status write32( unsigned reg, uint32_t value, bool flag );
   pl_status write( unsigned reg, void const *data, unsigned len, bool flag );
   pl_status writeBlock( unsigned reg, void const *data, unsigned len, bool flag );

   // How often the server repeats a failed transfer. When not set, the server uses its default.
   void retryCountIs( unsigned n );

   // Makes and initialises the Ham of this name for the device of args. Null, with a trace, when
   // that fails.
   static Ham *create( std::string const &name, Topology::Topology const &topology,
                       Drivers::DriverArgs const &args );
};

using HamFactory = std::function<Ham *( Topology::Topology const &, Drivers::DriverArgs const & )>;

// Factories by the "ham" of a topology medium. The table is filled when the library is loaded and
// does not change later.
extern std::map<std::string, HamFactory> hams;

// Makes the Ham for the component of args, or for the device when args name no component. The
// medium in the loaded topology names its type. Null, with a trace, on a failure.
Ham *createHam( Drivers::DriverArgs const &args );

} // namespace Ham
