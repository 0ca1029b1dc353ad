#include "sockets/Frames.h"

#include <google/protobuf/io/coded_stream.h>

#include <cstdint>

namespace Sockets {

namespace io = google::protobuf::io;

Frame firstFrame( std::string_view bytes ) {
   constexpr size_t maxVarintBytes = 10;
   const std::string_view head = bytes.substr( 0, maxVarintBytes );
   io::CodedInputStream stream( reinterpret_cast<const uint8_t *>( head.data() ),
                                static_cast<int>( head.size() ) );
   uint64_t length = 0;
   if ( !stream.ReadVarint64( &length ) )
      return { head.size() < maxVarintBytes ? Frame::State::Incomplete : Frame::State::NoLength };
   if ( length > maxFrameBytes )
      return { Frame::State::TooLong };
   const auto headBytes = static_cast<size_t>( stream.CurrentPosition() );
   const auto messageBytes = static_cast<size_t>( length );
   const size_t size = headBytes + messageBytes;
   if ( bytes.size() < size )
      return { Frame::State::Incomplete, {}, size };
   return { Frame::State::Whole, bytes.substr( headBytes, messageBytes ), size };
}

std::string framed( const google::protobuf::MessageLite &message ) {
   const size_t size = message.ByteSizeLong();
   const auto length = static_cast<uint32_t>( size );
   std::string bytes( io::CodedOutputStream::VarintSize32( length ) + size, '\0' );
   auto *start = reinterpret_cast<uint8_t *>( bytes.data() );
   message.SerializeWithCachedSizesToArray(
      io::CodedOutputStream::WriteVarint32ToArray( length, start ) );
   return bytes;
}

} // namespace Sockets
