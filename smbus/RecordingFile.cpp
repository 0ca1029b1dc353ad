#include "smbus/RecordingFile.h"

#include "sockets/Frames.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

namespace Bus {

void readRecording( const std::string &path,
                    const std::function<void( const SmbusRecording::Entry & )> &handle ) {
   std::ifstream stream( path, std::ios::binary );
   const std::string bytes{ std::istreambuf_iterator<char>( stream ), {} };
   if ( !stream )
      throw RecordingError( fmt::format( "{}: can't be read: {}", path, std::strerror( errno ) ) );
   for ( size_t at = 0; at < bytes.size(); ) {
      const auto fail = [&]( const std::string &reason ) {
         throw RecordingError( fmt::format( "{}: byte {}: {}", path, at, reason ) );
      };
      const Sockets::Frame frame = Sockets::firstFrame( std::string_view( bytes ).substr( at ) );
      if ( frame.state == Sockets::Frame::State::Incomplete )
         fail( "the file ends in the middle of an entry" );
      SmbusRecording::Entry entry;
      if ( frame.state != Sockets::Frame::State::Whole ||
           !entry.ParseFromArray( frame.message.data(),
                                  static_cast<int>( frame.message.size() ) ) ||
           entry.what_case() == SmbusRecording::Entry::WHAT_NOT_SET )
         fail( "not an entry of a recording" );
      handle( entry );
      at += frame.size;
   }
}

} // namespace Bus
