#include "screen/Sparkline.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Screen {

namespace {

std::vector<double> meansOf( const std::vector<double> &numbers, size_t count ) {
   std::vector<double> means;
   for ( size_t i = 0; i < count; ++i ) {
      const size_t begin = numbers.size() * i / count, end = numbers.size() * ( i + 1 ) / count;
      double sum = 0;
      for ( size_t j = begin; j < end; ++j )
         sum += numbers[j];
      means.push_back( sum / static_cast<double>( end - begin ) );
   }
   return means;
}

} // namespace

std::string sparkline( const std::vector<double> &numbers, size_t cells ) {
   if ( numbers.size() > cells )
      return sparkline( meansOf( numbers, cells ), cells );
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
