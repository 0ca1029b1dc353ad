#include "health/Event.h"

namespace Health {

std::string_view nameOf( Event::What what ) {
   switch ( what ) {
   case Event::What::Set:
      return "set";
   case Event::What::Clear:
      return "clear";
   default:
      return "acknowledged";
   }
}

} // namespace Health
