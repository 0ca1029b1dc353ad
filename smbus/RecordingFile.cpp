#include "smbus/RecordingFile.h"

#include "sockets/Frames.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

namespace Bus {

namespace {

struct Extent {
   size_t end;   // of the last whole entry
   size_t bytes; // in the file
};

RecordingError damage( const std::string &path, size_t at, const std::string &reason ) {
   return RecordingError( fmt::format( "{}: byte {}: {}", path, at, reason ) );
}

Extent read( const std::string &path, const HandleEntry &handle ) {
   std::ifstream stream( path, std::ios::binary );
   const std::string bytes{ std::istreambuf_iterator<char>( stream ), {} };
   if ( !stream )
      throw RecordingError( fmt::format( "{}: can't be read: {}", path, std::strerror( errno ) ) );
   size_t at = 0;
   while ( at < bytes.size() ) {
      const Sockets::Frame frame = Sockets::firstFrame( std::string_view( bytes ).substr( at ) );
      if ( frame.state == Sockets::Frame::State::Incomplete )
         break;
      SmbusRecording::Entry entry;
      if ( frame.state != Sockets::Frame::State::Whole ||
           !entry.ParseFromArray( frame.message.data(),
                                  static_cast<int>( frame.message.size() ) ) ||
           entry.what_case() == SmbusRecording::Entry::WHAT_NOT_SET )
         throw damage( path, at, "not an entry of a recording" );
      handle( entry );
      at += frame.size;
   }
   return { at, bytes.size() };
}

} // namespace

void readRecording( const std::string &path, const HandleEntry &handle ) {
   const Extent extent = read( path, handle );
   if ( extent.end < extent.bytes )
      throw damage( path, extent.end, "the file ends in the middle of an entry" );
}

size_t endOfRecording( const std::string &path ) {
   const Extent extent = read( path, []( const SmbusRecording::Entry & ) {} );
   if ( extent.end == 0 && extent.bytes > 0 ) // any file may begin like an entry
      throw damage( path, 0, "not an entry of a recording" );
   return extent.end;
}

} // namespace Bus
