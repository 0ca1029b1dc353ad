// What a reader opens by a path, without a disk.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace Fuzz {

class MemoryFile {
 public:
   MemoryFile();
   ~MemoryFile();
   MemoryFile( const MemoryFile & ) = delete;
   MemoryFile &operator=( const MemoryFile & ) = delete;

   // Its whole content from now on.
   void holds( std::string_view bytes );
   const std::string &path() const { return path_; }

 private:
   int fd_;
   std::string path_;
};

inline std::string_view textOf( const uint8_t *data, size_t size ) {
   return { reinterpret_cast<const char *>( data ), size };
}

// The path of a file that holds the input, the same one for every input.
const std::string &fileOf( const uint8_t *data, size_t size );

} // namespace Fuzz
