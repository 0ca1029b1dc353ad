// Lines in sections. The first line of each has its name in the margin.
#pragma once

#include "screen/Wrap.h"

#include <fmt/ranges.h>
#include <string>
#include <utility>
#include <vector>

namespace Host {

class TextSections {
 public:
   explicit TextSections( size_t columns ) : columns_( columns ) {}

   void section( std::string name ) { name_ = std::move( name ); }
   // `indent` further blanks for what goes on in the next line.
   void line( const std::string &text, size_t indent = 2 ) {
      Screen::wrap( lines_, fmt::format( "{:<{}}{}", std::exchange( name_, {} ), margin, text ),
                    margin + indent, columns_ );
   }
   // All names, or at a terminal as many as a person reads.
   std::string list( const std::vector<std::string> &names ) const {
      constexpr size_t most = 12;
      if ( columns_ == 0 || names.size() <= most + 1 )
         return fmt::format( "{}", fmt::join( names, ", " ) );
      return fmt::format( "{} and {} more", fmt::join( names.begin(), names.begin() + most, ", " ),
                          names.size() - most );
   }
   void bare( const std::string &text ) { Screen::wrap( lines_, text, margin, columns_ ); }
   const std::vector<std::string> &lines() const { return lines_; }

 private:
   static constexpr size_t margin = 12;

   const size_t columns_;
   std::string name_{};
   std::vector<std::string> lines_{};
};

} // namespace Host
