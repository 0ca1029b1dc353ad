#include "host/terminal/Progress.h"

#include <cstdio>
#include <fmt/format.h>

namespace Host {
namespace {

constexpr size_t barWidth = 30;
constexpr auto clearLine = "\r\x1b[K";

} // namespace

Progress::~Progress() {
   if ( isDrawn_ )
      fmt::print( stderr, "{}", clearLine );
}

void Progress::update( size_t settled, size_t all, const std::string &operation, Time now ) {
   if ( !isTerminal_ || now - start_ < patience )
      return;
   const size_t filled = all ? barWidth * settled / all : barWidth;
   fmt::print( stderr, "{}[{:-<{}}] {}/{} {}", clearLine, std::string( filled, '#' ), barWidth,
               settled, all, operation );
   std::fflush( stderr );
   isDrawn_ = true;
}

} // namespace Host
