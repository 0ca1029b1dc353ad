#include "host/session/FaultWords.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <rapidjson/encodings.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/stringbuffer.h>

namespace Host {
namespace {

constexpr size_t messagesKept = 3;
constexpr size_t tracesKept = 100; // many more than one operation writes

} // namespace

void FaultWords::operationBegins() {
   fault_.clear();
   traces_.clear();
   messages_.clear();
}

void FaultWords::heard( const Trace &trace ) {
   const auto fits =
      std::find_if( beginnings_.begin(), beginnings_.end(), [&]( const std::string &beginning ) {
         return trace.text.starts_with( beginning );
      } );
   if ( fits != beginnings_.end() )
      fault_ = printable( trace.text.substr( fits->size() ) );
   traces_.push_back( trace.text );
   if ( traces_.size() > tracesKept )
      traces_.erase( traces_.begin() );
   if ( trace.level != 0 )
      return;
   messages_.push_back( printable( trace.text ) );
   if ( messages_.size() > messagesKept )
      messages_.erase( messages_.begin() );
}

bool FaultWords::hasTrace( const std::string &beginning ) const {
   return !beginning.empty() &&
          std::any_of( traces_.begin(), traces_.end(),
                       [&]( const std::string &trace ) { return trace.starts_with( beginning ); } );
}

std::string FaultWords::words() const {
   return hasFault() ? fault_ : fmt::format( "{}", fmt::join( messages_, "; " ) );
}

std::string printable( const std::string &text ) {
   rapidjson::MemoryStream input( text.data(), text.size() );
   std::string result;
   while ( input.Tell() < text.size() ) {
      const size_t start = input.Tell();
      rapidjson::StringBuffer checked;
      const bool valid = rapidjson::UTF8<>::Validate( input, checked );
      const auto first = static_cast<unsigned char>( text[start] );
      if ( valid && first >= ' ' && first != 0x7F )
         result.append( checked.GetString(), checked.GetSize() );
      else
         result += valid ? ' ' : '?';
   }
   return result;
}

} // namespace Host
