#include "smbus/RecordingFile.h"

#include "sockets/Frames.h"

#include <fmt/format.h>

#include <sys/stat.h>

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

// The stream was opened just now.
Extent read( const std::string &path, std::ifstream &stream, const HandleEntry &handle ) {
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

void readWhole( const std::string &path, std::ifstream &stream, const HandleEntry &handle ) {
   const Extent extent = read( path, stream, handle );
   if ( extent.end < extent.bytes )
      throw damage( path, extent.end, "the file ends in the middle of an entry" );
}

// 0 when there is no such file.
ino_t inodeOf( const std::string &path ) {
   struct stat status {};
   return stat( path.c_str(), &status ) == 0 ? status.st_ino : 0;
}

// The present file of a ring begins with the start that was the last one in the earlier file.
class WithoutRepeatedStart {
 public:
   explicit WithoutRepeatedStart( const HandleEntry &handle ) : handle_( handle ) {}
   void earlier( const SmbusRecording::Entry &entry ) {
      if ( entry.has_start() )
         start_ = entry.SerializeAsString();
      handle_( entry );
   }
   void present( const SmbusRecording::Entry &entry ) {
      const bool isRepeated = isFirst_ && entry.SerializeAsString() == start_;
      isFirst_ = false;
      if ( !isRepeated )
         handle_( entry );
   }

 private:
   const HandleEntry &handle_;
   std::string start_;
   bool isFirst_ = true;
};

} // namespace

std::string earlierFile( const std::string &path ) { return path + ".1"; }

void readRecording( const std::string &path, const HandleEntry &handle ) {
   const std::string earlierPath = earlierFile( path );
   std::ifstream earlier, present;
   ino_t inode = 0;
   int error = 0;
   do { // again, if the present file has become the earlier one meanwhile
      inode = inodeOf( earlierPath );
      earlier = std::ifstream( earlierPath, std::ios::binary );
      present = std::ifstream( path, std::ios::binary );
      error = errno;
   } while ( inodeOf( earlierPath ) != inode );
   WithoutRepeatedStart handleOnce( handle );
   if ( earlier.is_open() )
      readWhole( earlierPath, earlier,
                 [&]( const SmbusRecording::Entry &entry ) { handleOnce.earlier( entry ); } );
   errno = error;
   if ( present.is_open() || !earlier.is_open() )
      readWhole( path, present,
                 [&]( const SmbusRecording::Entry &entry ) { handleOnce.present( entry ); } );
}

size_t endOfRecording( const std::string &path ) {
   std::ifstream stream( path, std::ios::binary );
   const Extent extent = read( path, stream, []( const SmbusRecording::Entry & ) {} );
   if ( extent.end == 0 && extent.bytes > 0 ) // any file may begin like an entry
      throw damage( path, 0, "not an entry of a recording" );
   return extent.end;
}

} // namespace Bus
