#include "Measuring.h"

#include <algorithm>
#include <filesystem>
#include <sched.h>
#include <string>
#include <unistd.h>

namespace {

void runOn( pid_t process, int core ) {
   cpu_set_t cores;
   CPU_ZERO( &cores );
   for ( long i = 0; i < sysconf( _SC_NPROCESSORS_ONLN ); ++i )
      if ( core < 0 || i == core )
         CPU_SET( static_cast<size_t>( i ), &cores );
   // Each thread has its own: those that the server made for a client, too.
   const std::string tasks = "/proc/" + std::to_string( process ) + "/task";
   for ( const auto &task : std::filesystem::directory_iterator( tasks ) )
      sched_setaffinity( std::stoi( task.path().filename() ), sizeof cores, &cores );
}

} // namespace

void place( Placement placement, pid_t other ) {
   runOn( getpid(), placement == Free ? -1 : 0 );
   runOn( other, placement == Free ? -1 : placement == Apart ? 1 : 0 );
}

double secondsOf( clockid_t clock ) {
   timespec time{};
   clock_gettime( clock, &time );
   return static_cast<double>( time.tv_sec ) + static_cast<double>( time.tv_nsec ) / 1e9;
}

double median( std::vector<double> values ) {
   const auto middle = values.begin() + static_cast<long>( values.size() / 2 );
   std::nth_element( values.begin(), middle, values.end() );
   return *middle;
}
