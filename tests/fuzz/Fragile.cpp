// A target that breaks at inputs with certain letters.
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size ) {
   const std::string_view text( reinterpret_cast<const char *>( data ), size );
   if ( text.starts_with( "break" ) )
      std::abort();
   if ( text.starts_with( "read" ) ) {
      const volatile int *nowhere = nullptr;
      return *nowhere;
   }
   return 0;
}
