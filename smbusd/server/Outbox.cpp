#include "smbusd/server/Outbox.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace Smbusd {

Outbox::Outbox() : event_( eventfd( 0, EFD_CLOEXEC | EFD_NONBLOCK ) ) {
   if ( event_ < 0 )
      throw std::system_error( errno, std::generic_category(), "eventfd" );
}

Outbox::~Outbox() { close( event_ ); }

bool Outbox::add( const std::string &frame ) {
   const std::lock_guard lock( mutex_ );
   if ( frame.size() > maxBytes - frames_.size() )
      return false;
   if ( frames_.empty() )
      eventfd_write( event_, 1 );
   frames_ += frame;
   return true;
}

std::string Outbox::take() {
   const std::lock_guard lock( mutex_ );
   eventfd_t count;
   eventfd_read( event_, &count );
   return std::exchange( frames_, {} );
}

} // namespace Smbusd
