// Runs a target without libFuzzer: REPLAY COUNT SEED... runs each seed, which is a file or a folder
// of files, and as many changed ones, always the same. An input that ends the process is told as
// hexadecimal digits.
#include "fuzz/Mutator.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size );
// Of the sanitizers, which don't abort.
extern "C" [[gnu::weak]] void __sanitizer_set_death_callback( void ( *callback )() );

namespace {

std::string present; // what runs now
std::string name;

void write( std::string_view text ) {
   [[maybe_unused]] const ssize_t count = ::write( STDERR_FILENO, text.data(), text.size() );
}

void tellInput() {
   write( "the input that ended it: " );
   write( name );
   write( ", in hexadecimal digits:\n" );
   for ( const char byte : present ) {
      constexpr std::string_view digits = "0123456789abcdef";
      const auto value = static_cast<uint8_t>( byte );
      write( digits.substr( value >> 4, 1 ) );
      write( digits.substr( value & 15, 1 ) );
   }
   write( "\n" );
}

void onSignal( int signal ) {
   tellInput();
   std::signal( signal, SIG_DFL );
   std::raise( signal );
}

void run( std::string input, std::string words ) {
   present = std::move( input );
   name = std::move( words );
   LLVMFuzzerTestOneInput( reinterpret_cast<const uint8_t *>( present.data() ), present.size() );
}

std::vector<std::filesystem::path> filesOf( char **begin, char **end ) {
   std::vector<std::filesystem::path> files;
   for ( char **seed = begin; seed != end; ++seed ) {
      if ( !std::filesystem::is_directory( *seed ) )
         files.emplace_back( *seed );
      else
         for ( const auto &entry : std::filesystem::directory_iterator( *seed ) )
            files.push_back( entry.path() );
   }
   std::sort( files.begin(), files.end() );
   return files;
}

} // namespace

int main( int count, char **words ) {
   if ( count < 3 ) {
      std::fprintf( stderr, "%s COUNT SEED...: runs each seed, and COUNT changed ones\n",
                    words[0] );
      return 2;
   }
   if ( __sanitizer_set_death_callback )
      __sanitizer_set_death_callback( tellInput );
   else
      for ( const int signal : { SIGSEGV, SIGBUS, SIGFPE, SIGILL } )
         std::signal( signal, onSignal );
   std::signal( SIGABRT, onSignal );
   std::vector<std::string> seeds;
   for ( const auto &path : filesOf( words + 2, words + count ) ) {
      std::ifstream file( path, std::ios::binary );
      seeds.emplace_back( std::istreambuf_iterator<char>( file ),
                          std::istreambuf_iterator<char>() );
      if ( !file ) {
         std::fprintf( stderr, "%s: can't be read\n", path.c_str() );
         return 2;
      }
      run( seeds.back(), "seed " + path.string() );
   }
   if ( seeds.empty() ) {
      std::fprintf( stderr, "no seeds there\n" );
      return 2;
   }
   Fuzz::Mutator mutator( seeds );
   for ( unsigned long number = 1; number <= std::strtoul( words[1], nullptr, 10 ); ++number )
      run( mutator.next(), "change " + std::to_string( number ) );
   if ( __sanitizer_set_death_callback ) // from here on no input is to blame
      __sanitizer_set_death_callback( nullptr );
   std::printf( "%zu seeds and %s changed ones\n", seeds.size(), words[1] );
   return 0;
}
