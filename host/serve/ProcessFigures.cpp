#include "host/serve/ProcessFigures.h"

#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <sys/resource.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

namespace Host {
namespace {

double secondsOf( const timeval &time ) {
   return static_cast<double>( time.tv_sec ) + static_cast<double>( time.tv_usec ) / 1e6;
}

// The number behind so many blanks. The name of the program may have blanks itself: proc(5).
uint64_t fieldOf( std::istream &&file, char nameEnd, int blanks ) {
   if ( nameEnd != '\0' )
      file.ignore( std::numeric_limits<std::streamsize>::max(), nameEnd );
   for ( int i = 0; i < blanks; ++i )
      file.ignore( std::numeric_limits<std::streamsize>::max(), ' ' );
   uint64_t number = 0;
   file >> number;
   return number;
}

// It doesn't change, and the clock on the wall may be set later.
double startTime() {
   timespec now{}, sinceBoot{};
   ::clock_gettime( CLOCK_REALTIME, &now );
   ::clock_gettime( CLOCK_BOOTTIME, &sinceBoot );
   const auto secondsIn = []( const timespec &time ) {
      return static_cast<double>( time.tv_sec ) + static_cast<double>( time.tv_nsec ) / 1e9;
   };
   const uint64_t ticks = fieldOf( std::ifstream( "/proc/self/stat" ), ')', 20 );
   return secondsIn( now ) - secondsIn( sinceBoot ) +
          static_cast<double>( ticks ) / static_cast<double>( ::sysconf( _SC_CLK_TCK ) );
}

} // namespace

ProcessFigures processFigures() {
   static const double started = startTime();
   ProcessFigures figures{ .startTime = started };
   rusage used{};
   ::getrusage( RUSAGE_SELF, &used );
   figures.cpuSeconds = secondsOf( used.ru_utime ) + secondsOf( used.ru_stime );
   figures.residentBytes = fieldOf( std::ifstream( "/proc/self/statm" ), '\0', 1 ) *
                           static_cast<uint64_t>( ::sysconf( _SC_PAGESIZE ) );
   std::error_code failure;
   for ( std::filesystem::directory_iterator entry( "/proc/self/fd", failure ), end;
         !failure && entry != end; entry.increment( failure ) )
      ++figures.descriptors;
   if ( figures.descriptors > 0 )
      --figures.descriptors; // that of the folder itself
   rlimit limit{};
   ::getrlimit( RLIMIT_NOFILE, &limit );
   figures.descriptorLimit = limit.rlim_cur;
   return figures;
}

} // namespace Host
