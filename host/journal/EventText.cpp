#include "host/journal/EventText.h"

#include <fmt/format.h>

namespace Host {

std::string_view kindOf( const Health::Event &event ) {
   return event.what == Health::Event::What::Set ? Health::nameOf( event.level )
                                                 : Health::nameOf( event.what );
}

std::string textOf( const Health::Event &event, size_t longest ) {
   std::string text = event.cause;
   if ( !event.words.empty() )
      text += ": " + event.words;
   constexpr size_t roomForCount = 12; // " and 99 more"
   for ( size_t i = 0; i < event.explains.size(); ++i ) {
      const bool isLast = i + 1 == event.explains.size();
      const size_t room = isLast ? 0 : roomForCount;
      if ( i > 0 && text.size() + event.explains[i].size() + 2 + room > longest )
         return text + fmt::format( " and {} more", event.explains.size() - i );
      text += ( i == 0 ? "; explains " : ", " ) + event.explains[i];
   }
   return text;
}

} // namespace Host
