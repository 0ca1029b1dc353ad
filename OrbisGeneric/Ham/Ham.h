// A hardware access method: how a driver talks to its chip. Requests are queued into a batch, the
// batch is executed, and each result is fetched by the id that queuing returned.
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
   // One queued request of the current batch.
   using ResponseId = uint32_t;

   uint32_t retryCount = 0;
   bool retryCountSet = false;

   virtual void init() {}
   // Starts a new batch; ids of the last one are no longer valid.
   virtual void prepare() = 0;
   // Runs the batch. Anything but PL_STATUS_OK: no result may be fetched.
   virtual pl_status execute() = 0;

   // Each queues one request. What a concrete method does not provide throws
   // NotImplementedException. The bool of a write asks for packet error checking.
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

   // Words are low byte first. getBlock's length is 0 where the device gives the count.
   virtual uint8_t get8( ResponseId id );
   virtual uint16_t get16( ResponseId id );
   virtual uint32_t get32( ResponseId id );
   virtual std::string getBlock( ResponseId id, unsigned len );

   // Batches of one request. On a status other than PL_STATUS_OK the output is left alone.
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

   // Further tries of a failed transfer, on the server's side; its own default unless set.
   void retryCountIs( unsigned n );

   // The named method for the device of args, initialised; null, with a trace, when there is none.
   static Ham *create( std::string const &name, Topology::Topology const &topology,
                       Drivers::DriverArgs const &args );
};

using HamFactory = std::function<Ham *( Topology::Topology const &, Drivers::DriverArgs const & )>;

// Factories by the "ham" of a topology medium; filled when the library is loaded and not
// changed after.
extern std::map<std::string, HamFactory> hams;

// The access method for the component (or, without one, the device) of args, as its medium in the
// loaded topology names it; null, with a trace, when that can't be made.
Ham *createHam( Drivers::DriverArgs const &args );

} // namespace Ham
