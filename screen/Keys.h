#pragma once

#include <string>

namespace Screen {

enum class Key {
   Text, // a character
   Up,
   Down,
   Left,
   Right,
   PageUp,
   PageDown,
   Home,
   End,
   Tab,
   Enter,
   Escape,
   Backspace,
};

// A key that was pressed.
struct Press {
   Key key = Key::Text;
   std::string text{}; // the character, in UTF-8

   bool is( const char *character ) const { return key == Key::Text && text == character; }
};

} // namespace Screen
