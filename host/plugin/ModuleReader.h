#pragma once

#include "host/plugin/Messages.h"
#include "host/plugin/ObjectCalls.h"
#include "optics/Image.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <pl.h>
#include <string>
#include <vector>

namespace Host {

// The reading that tells how the reading of a module's memory went.
inline constexpr auto memoryName = "memory";

// Reads the memory of a module through SMBus objects of the plug-in. What never changes is read
// once, monitors and flags each time. Only the pages that the module has are chosen, and its own
// page is put back. Each transfer is a transaction of its own on the bus, so another program may
// choose a page between two of ours: what was read from another page than the one that we wanted is
// thrown away and read again.
class ModuleReader {
 public:
   using Pause = std::function<void( std::chrono::milliseconds )>;

   // `second`: the address 0x51 of an SFP. Where it is null, that is not read.
   ModuleReader( pl_smbus *first, pl_smbus *second, Pause pause )
      : first_( first ), second_( second ), pause_( std::move( pause ) ) {}

   // `fresh`: the module was plugged since the last call. Where something can't be read, what was
   // read before it is passed all the same: reading has cleared flags.
   void read( bool fresh, const ReadingSink &sink,
              const std::function<void( const Event & )> &memory );

 private:
   using Bytes = std::vector<uint8_t>;

   void readAll( ModuleMemory &memory );
   void readBlocks( const std::vector<Optics::Block> &blocks, Optics::Image &into );
   void readPage( const std::vector<Optics::Block> &blocks, Optics::Image &into );
   void readIdentity( ModuleMemory &memory );
   bool isShown( const Optics::Region &region );
   void choose( const Optics::Region &region );
   void putBack();

   pl_status transfer( const Optics::Block &block, Bytes &bytes ) const;
   Bytes read( const Optics::Block &block );
   Bytes readShort( uint8_t address, unsigned first, unsigned size );
   std::vector<Optics::Block> readable( std::vector<Optics::Block> blocks ) const;
   // Repeats a transfer that was not acknowledged: the bus may have lost that, or the module is
   // busy.
   pl_status persist( const std::function<pl_status()> &transfer ) const;
   pl_smbus *proxyOf( uint8_t address ) const;

   pl_smbus *const first_;
   pl_smbus *const second_;
   const Pause pause_;
   Optics::Image image_{};
   bool hasIdentity_ = false;
   bool isShortOnly_ = false;       // the way to the module lets only short blocks pass
   std::optional<Bytes> ownPage_{}; // bank and page that were chosen before this read
   Bytes page_{};                   // that are chosen now; empty: nobody knows
};

} // namespace Host
