#include "host/plugin/ModuleReader.h"

#include "host/plugin/Operation.h"
#include "optics/Decode.h"
#include "optics/Pages.h"
#include "optics/ReadPlan.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

namespace Host {
namespace {

using namespace std::chrono_literals;

// A module needs up to 10 ms after its page was chosen, and up to 80 ms to store what was written
// to it (CMIS, tBPC and tWRITENV). In this time it may not acknowledge.
constexpr std::array pauses{ 0ms, 10ms, 80ms };

// What every SMBus controller can read in one block.
constexpr unsigned shortBlock = 32;

constexpr unsigned bankByte = 126, pageByte = 127;
constexpr unsigned triesOfAPage = 3;
constexpr uint8_t firstBankedPage = 0x10; // CMIS

struct ReadError {
   int status;
   std::string words;
};

bool isSameRegion( const Optics::Block &one, const Optics::Block &other ) {
   return one.region == other.region;
}

} // namespace

void ModuleReader::read( bool fresh, const ReadingSink &sink,
                         const std::function<void( const Event & )> &memory ) {
   runOperation( sink, memoryName, "", [&]( Reading &reading ) {
      if ( fresh || !hasIdentity_ ) {
         image_ = {};
         hasIdentity_ = isShortOnly_ = false;
      }
      ModuleMemory found{ .begins = !hasIdentity_ };
      try {
         readAll( found );
      } catch ( const ReadError &error ) {
         reading.state = State::Unreadable;
         applyStatus( reading, error.status );
         reading.fault.words = error.words;
      }
      memory( found );
   } );
}

void ModuleReader::readAll( ModuleMemory &memory ) {
   ownPage_.reset();
   try {
      if ( !hasIdentity_ )
         readIdentity( memory );
      readBlocks( readable( Optics::liveBlocks( image_ ) ), memory.image );
   } catch ( ... ) {
      putBack();
      throw;
   }
   putBack();
}

// Each step tells what else there is. A page behind the first one that the module doesn't show is
// left out: whoever decodes the memory says what is missing then.
void ModuleReader::readIdentity( ModuleMemory &memory ) {
   std::vector<Optics::Block> missing;
   const auto isMissing = [&missing]( const Optics::Block &block ) {
      return std::find( missing.begin(), missing.end(), block ) != missing.end();
   };
   for ( ;; ) {
      auto blocks = readable( Optics::identityBlocks( image_ ) );
      std::erase_if( blocks, isMissing );
      if ( blocks.empty() )
         break;
      const Optics::Region region = blocks.front().region;
      std::erase_if( blocks, [&]( const Optics::Block &block ) { return block.region != region; } );
      try {
         readBlocks( blocks, image_ );
      } catch ( const ReadError &error ) {
         if ( error.status != PL_STATUS_OK || region.page == 0 )
            throw;
         missing.insert( missing.end(), blocks.begin(), blocks.end() );
      }
      memory.image = image_;
   }
   hasIdentity_ = true;
}

std::vector<Optics::Block> ModuleReader::readable( std::vector<Optics::Block> blocks ) const {
   std::erase_if(
      blocks, [this]( const Optics::Block &block ) { return !proxyOf( block.region.address ); } );
   return blocks;
}

// Page by page, in the order of the blocks.
void ModuleReader::readBlocks( const std::vector<Optics::Block> &blocks, Optics::Image &into ) {
   for ( auto at = blocks.begin(); at != blocks.end(); ) {
      const auto end = std::find_if_not( at, blocks.end(), [&]( const Optics::Block &block ) {
         return isSameRegion( block, *at );
      } );
      if ( at->region.upper && Optics::hasPages( image_ ) )
         readPage( { at, end }, into );
      else
         for ( ; at != end; ++at )
            into.put( at->region, at->first, read( *at ) );
      at = end;
   }
}

// Only when the page is still the same after the blocks were read, they are of that page.
void ModuleReader::readPage( const std::vector<Optics::Block> &blocks, Optics::Image &into ) {
   const Optics::Region &region = blocks.front().region;
   for ( unsigned tries = 0; tries < triesOfAPage; ++tries ) {
      choose( region );
      std::vector<Bytes> read;
      for ( const Optics::Block &block : blocks )
         read.push_back( this->read( block ) );
      if ( isShown( region ) ) {
         for ( size_t i = 0; i < blocks.size(); ++i )
            into.put( region, blocks[i].first, read[i] );
         return;
      }
   }
   throw ReadError{ PL_STATUS_OK, fmt::format( "page {:02x}h was chosen, and the module shows page "
                                               "{:02x}h",
                                               region.page, page_.back() ) };
}

// The last byte is the page; before it is the bank, where the module has banks.
bool ModuleReader::isShown( const Optics::Region &region ) {
   const bool hasBanks = Optics::standardOf( image_ ) == Optics::Standard::Cmis;
   const unsigned first = hasBanks ? bankByte : pageByte;
   page_ = readShort( region.address, first, pageByte + 1 - first );
   return page_.back() == region.page &&
          ( region.page < firstBankedPage || page_.front() == region.bank );
}

void ModuleReader::choose( const Optics::Region &region ) {
   if ( !ownPage_ ) {
      isShown( region );
      ownPage_ = page_;
   }
   Bytes wanted = page_.empty() ? *ownPage_ : page_;
   wanted.back() = region.page;
   if ( wanted.size() > 1 && region.page >= firstBankedPage )
      wanted.front() = region.bank;
   if ( wanted == page_ )
      return;
   page_.clear(); // a choice that isn't acknowledged may have come through all the same
   const auto command = static_cast<uint8_t>( pageByte + 1 - wanted.size() );
   const int status = persist( [&] {
      return first_->ops->i2c_block_write( first_, command, wanted.data(),
                                           static_cast<unsigned>( wanted.size() ) );
   } );
   if ( status != PL_STATUS_OK )
      throw ReadError{ status, fmt::format( "page {:02x}h can't be chosen", region.page ) };
   page_ = wanted;
}

// A module that doesn't take its page back shows another one to the next who reads it; it is asked
// what it shows each time.
void ModuleReader::putBack() {
   if ( !ownPage_ || *ownPage_ == page_ )
      return;
   const auto command = static_cast<uint8_t>( pageByte + 1 - ownPage_->size() );
   persist( [&] {
      return first_->ops->i2c_block_write( first_, command, ownPage_->data(),
                                           static_cast<unsigned>( ownPage_->size() ) );
   } );
}

pl_status ModuleReader::transfer( const Optics::Block &block, Bytes &bytes ) const {
   pl_smbus *proxy = proxyOf( block.region.address );
   bytes.resize( block.size );
   return proxy->ops->i2c_block_read( proxy, static_cast<uint8_t>( block.first ), bytes.data(),
                                      block.size );
}

ModuleReader::Bytes ModuleReader::read( const Optics::Block &block ) {
   Bytes bytes;
   if ( !isShortOnly_ || block.size <= shortBlock ) {
      const int status = persist( [&] { return transfer( block, bytes ); } );
      if ( status == PL_STATUS_OK )
         return bytes;
      // A proxy calls fewer bytes than it has asked for a failure of the socket.
      if ( block.size <= shortBlock )
         throw ReadError{ PL_STATUS_TRANSACTION,
                          fmt::format( "address {:#04x}, bytes {} to {}: no answer",
                                       block.region.address, block.first,
                                       block.first + block.size - 1 ) };
   }
   bytes.clear();
   while ( bytes.size() < block.size ) {
      const auto done = static_cast<unsigned>( bytes.size() );
      const Bytes next = readShort( block.region.address, block.first + done,
                                    std::min( shortBlock, block.size - done ) );
      bytes.insert( bytes.end(), next.begin(), next.end() );
   }
   // Perhaps the module was only busy before. The flags in a block are those of its first reading.
   Bytes again;
   if ( !isShortOnly_ )
      isShortOnly_ = transfer( block, again ) != PL_STATUS_OK;
   return bytes;
}

ModuleReader::Bytes ModuleReader::readShort( uint8_t address, unsigned first, unsigned size ) {
   return read( { { .address = address }, first, size } );
}

pl_status ModuleReader::persist( const std::function<pl_status()> &transfer ) const {
   pl_status status = transfer();
   for ( const auto pause : pauses ) {
      if ( status == PL_STATUS_OK )
         return status;
      pause_( pause );
      status = transfer();
   }
   return status;
}

pl_smbus *ModuleReader::proxyOf( uint8_t address ) const {
   return address == 0x50 ? first_ : second_;
}

} // namespace Host
