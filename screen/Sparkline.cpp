#include "screen/Sparkline.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Screen {

std::string sparkline( const std::vector<double> &numbers ) {
   constexpr std::array blocks{ "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█" };
   if ( numbers.empty() )
      return {};
   const auto [lowest, highest] = std::minmax_element( numbers.begin(), numbers.end() );
   const double least = *lowest, range = *highest - least;
   std::string line;
   for ( const double number : numbers )
      line += range > 0 ? blocks.at( static_cast<size_t>(
                             std::lround( ( number - least ) / range * ( blocks.size() - 1 ) ) ) )
                        : blocks.at( blocks.size() / 2 - 1 );
   return line;
}

} // namespace Screen
