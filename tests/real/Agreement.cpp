#include "Agreement.h"

#include <fmt/format.h>
#include <fstream>

namespace RealTest {

Agreement::~Agreement() {
   unsigned listed = 0;
   std::string text;
   for ( const auto &[reason, count] : differences_ ) {
      listed += count;
      text += fmt::format( "      {:4} differ: {}\n", count, reason );
   }
   std::ofstream( OUT "/agreement.txt", std::ios::app )
      << fmt::format( "   {:34} {:4} words, {:4} agreed, {:4} listed differences\n{}", chips_,
                      words_, agreed_, listed, text );
}

} // namespace RealTest
