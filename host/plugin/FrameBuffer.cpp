#include "host/plugin/FrameBuffer.h"

#include <sockets/Frames.h>
#include <stdexcept>

namespace Host {

std::optional<std::string> FrameBuffer::next() {
   const Sockets::Frame frame = Sockets::firstFrame( bytes_ );
   switch ( frame.state ) {
   case Sockets::Frame::State::Incomplete:
      return {};
   case Sockets::Frame::State::Whole:
      break;
   default:
      throw std::runtime_error( "not a message, or too long" );
   }
   std::string message( frame.message );
   bytes_.erase( 0, frame.size );
   return message;
}

} // namespace Host
