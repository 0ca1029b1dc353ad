#include "host/terminal/Progress.h"

#include <cstdio>
#include <fmt/format.h>
#include <unistd.h>

namespace Host {
namespace {

constexpr size_t barWidth = 30;
constexpr auto clearLine = "\r\x1b[K";

} // namespace

Progress::Progress() : terminal_( ::isatty( STDERR_FILENO ) ) {}

Progress::~Progress() {
   if ( terminal_ )
      fmt::print( stderr, "{}", clearLine );
}

void Progress::update( size_t settled, size_t all, const std::string &operation ) {
   if ( terminal_ ) {
      const size_t filled = all ? barWidth * settled / all : barWidth;
      fmt::print( stderr, "{}[{:-<{}}] {}/{} {}", clearLine, std::string( filled, '#' ), barWidth,
                  settled, all, operation );
      std::fflush( stderr );
   } else if ( settled > printed_ ) {
      fmt::print( stderr, "{} of {} objects\n", settled, all );
   }
   printed_ = settled;
}

} // namespace Host
