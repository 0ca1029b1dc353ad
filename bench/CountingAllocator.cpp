// Counts every allocation of the process.
#include <cstdlib>
#include <new>

extern long allocations;
long allocations = 0;

void *operator new( size_t size ) {
   ++allocations;
   if ( void *memory = std::malloc( size ) )
      return memory;
   throw std::bad_alloc();
}
void operator delete( void *memory ) noexcept { std::free( memory ); }
void operator delete( void *memory, size_t ) noexcept { std::free( memory ); }
