#include "boardfiles/Finding.h"

#include <fmt/format.h>
#include <rapidjson/stringbuffer.h>

namespace BoardFiles {

std::string toText( const Finding &finding ) {
   std::string text = finding.file;
   if ( !finding.place.empty() )
      text += ":" + finding.place;
   if ( !finding.object.empty() )
      text += ": " + finding.object;
   return text + ": " + finding.reason;
}

Place Place::operator/( std::string_view key ) const {
   return { file, pointer.Append( key.data(), static_cast<rapidjson::SizeType>( key.size() ) ),
            object };
}

Place Place::operator/( size_t index ) const {
   return { file, pointer.Append( static_cast<rapidjson::SizeType>( index ) ), object };
}

std::string Place::pointerText() const {
   rapidjson::StringBuffer buffer;
   pointer.Stringify( buffer );
   return { buffer.GetString(), buffer.GetSize() };
}

void report( Findings &findings, const Place &place, std::string reason ) {
   findings.push_back( { place.file, place.pointerText(), place.object, std::move( reason ) } );
}

} // namespace BoardFiles
