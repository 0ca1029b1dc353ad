#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace Metrics {

// The labels of a series, in the order in which they were added. A name is given once.
class Labels {
 public:
   Labels() = default;
   Labels( std::initializer_list<std::pair<std::string_view, std::string_view>> labels ) {
      for ( const auto &[name, value] : labels )
         add( name, value );
   }

   // Bytes of the value that are no UTF-8, and zeros, become U+FFFD: readers refuse a whole answer
   // because of one of them.
   Labels &add( std::string_view name, std::string_view value );
   Labels with( std::string_view name, std::string_view value ) const {
      return Labels( *this ).add( name, value );
   }

   // `object="fan1",value="speed"`
   const std::string &text() const { return text_; }

 private:
   std::string text_{};
};

} // namespace Metrics
