#include "fuzz/MemoryFile.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace Fuzz {

MemoryFile::MemoryFile() : fd_( memfd_create( "input", MFD_CLOEXEC ) ) {
   if ( fd_ < 0 )
      throw std::system_error( errno, std::generic_category(), "memfd_create" );
   path_ = "/proc/self/fd/" + std::to_string( fd_ );
}

MemoryFile::~MemoryFile() { close( fd_ ); }

void MemoryFile::holds( std::string_view bytes ) {
   if ( ftruncate( fd_, 0 ) != 0 ||
        pwrite( fd_, bytes.data(), bytes.size(), 0 ) != static_cast<ssize_t>( bytes.size() ) )
      throw std::system_error( errno, std::generic_category(), path_ );
}

const std::string &fileOf( const uint8_t *data, size_t size ) {
   static MemoryFile file;
   file.holds( textOf( data, size ) );
   return file.path();
}

} // namespace Fuzz
