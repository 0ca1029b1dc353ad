#include "host/plugin/SharedPage.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <sys/mman.h>
#include <system_error>
#include <unistd.h>

namespace Host {
namespace {

constexpr size_t nameBytes = 64;
constexpr size_t roomBytes =
   60000; // the answers of this host's commands have less than 1,000 bytes

void check( bool good, const char *what ) {
   if ( !good )
      throw std::system_error( errno, std::generic_category(), what );
}

int newMemory( size_t size ) {
   const int descriptor = ::memfd_create( "orbis-host", MFD_CLOEXEC );
   check( descriptor >= 0, "memfd_create" );
   check( ::ftruncate( descriptor, static_cast<off_t>( size ) ) == 0, "ftruncate" );
   return descriptor;
}

} // namespace

// Both processes use the same program, so that they agree on it. New memory is all zeros.
struct SharedPage::Layout {
   std::atomic<int64_t> since; // of the operation that runs, in ticks of the clock; 0 for none
   std::array<std::atomic<char>, nameBytes> name;
   std::atomic<uint32_t> used; // bytes that are not sent
   std::array<char, roomBytes> bytes;
   static_assert( std::atomic<int64_t>::is_always_lock_free );
};

SharedPage::SharedPage() : SharedPage( newMemory( sizeof( Layout ) ) ) {}

SharedPage::SharedPage( int descriptor ) : descriptor_( descriptor ) {
   void *memory =
      ::mmap( nullptr, sizeof( Layout ), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0 );
   check( memory != MAP_FAILED, "mmap" );
   layout_ = static_cast<Layout *>( memory );
}

SharedPage::~SharedPage() {
   ::munmap( layout_, sizeof( Layout ) );
   ::close( descriptor_ );
}

// The time is zero while the name changes, so that nobody reads a part of it.
void SharedPage::operationBegins( std::string_view name, Time now ) {
   operationEnds();
   std::atomic_thread_fence( std::memory_order_release );
   const size_t length = std::min( name.size(), nameBytes );
   for ( size_t i = 0; i < length; ++i )
      layout_->name[i].store( name[i], std::memory_order_relaxed );
   if ( length < nameBytes )
      layout_->name[length].store( '\0', std::memory_order_relaxed );
   layout_->since.store( now.time_since_epoch().count(), std::memory_order_release );
}

void SharedPage::operationEnds() { layout_->since.store( 0, std::memory_order_relaxed ); }

std::optional<SharedPage::Operation> SharedPage::operation() const {
   const int64_t since = layout_->since.load( std::memory_order_acquire );
   if ( since == 0 )
      return {};
   Operation operation{ {}, Time( Time::duration( since ) ) };
   for ( const std::atomic<char> &each : layout_->name ) {
      const char letter = each.load( std::memory_order_relaxed );
      if ( letter == '\0' )
         break;
      operation.name += letter;
   }
   std::atomic_thread_fence( std::memory_order_acquire );
   const bool stayed = layout_->since.load( std::memory_order_relaxed ) == since;
   return stayed ? std::optional( operation ) : std::nullopt;
}

bool SharedPage::keep( std::string_view bytes ) {
   const uint32_t used = layout_->used.load( std::memory_order_relaxed );
   if ( bytes.size() > roomBytes - used )
      return false;
   std::memcpy( layout_->bytes.data() + used, bytes.data(), bytes.size() );
   layout_->used.store( used + static_cast<uint32_t>( bytes.size() ), std::memory_order_release );
   return true;
}

std::string_view SharedPage::take() {
   return { layout_->bytes.data(), layout_->used.exchange( 0, std::memory_order_relaxed ) };
}

std::string_view SharedPage::unsent() const {
   const uint32_t used = layout_->used.load( std::memory_order_acquire );
   return { layout_->bytes.data(), std::min<size_t>( used, roomBytes ) };
}

} // namespace Host
