#include "session/FaultWords.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <rapidjson/encodings.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/stringbuffer.h>

namespace Host {
namespace {

constexpr std::size_t messagesKept = 3;

} // namespace

void FaultWords::operationBegins() {
   fault_.clear();
   messages_.clear();
}

void FaultWords::heard( const Trace &trace ) {
   const auto fits =
      std::find_if( beginnings_.begin(), beginnings_.end(), [&]( const std::string &beginning ) {
         return trace.text.starts_with( beginning );
      } );
   if ( fits != beginnings_.end() )
      fault_ = printable( trace.text.substr( fits->size() ) );
   if ( trace.level != 0 )
      return;
   messages_.push_back( printable( trace.text ) );
   if ( messages_.size() > messagesKept )
      messages_.erase( messages_.begin() );
}

std::string FaultWords::words() const {
   return sawFault() ? fault_ : fmt::format( "{}", fmt::join( messages_, "; " ) );
}

std::string printable( const std::string &text ) {
   rapidjson::MemoryStream input( text.data(), text.size() );
   std::string result;
   while ( input.Tell() < text.size() ) {
      const std::size_t start = input.Tell();
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
