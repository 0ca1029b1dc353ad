// What a terminal of the kind "xterm-256color" shows after it was sent these bytes.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace TestSupport {

class DrawnScreen {
 public:
   DrawnScreen( size_t columns, size_t rows );

   // Throws std::runtime_error on a sequence that it doesn't know.
   void feed( const std::string &bytes );
   void resize( size_t columns, size_t rows );

   // The lines, without blanks at their ends; and whether any character is coloured.
   std::string text() const;
   bool isColoured() const { return isColoured_; }
   bool isFullScreen() const { return isFullScreen_; }
   bool isCursorShown() const { return isCursorShown_; }
   // The cells that were written since the last call.
   size_t written();

 private:
   using Row = std::vector<std::string>; // a character a cell

   size_t columns() const { return cells_.front().size(); }
   void put( const std::string &character );
   void control( char byte );
   void sequence( const std::string &parameters, char end );
   void erase( size_t row, size_t from, size_t to );
   void scroll( size_t lines, bool isUp );
   void setMode( const std::string &parameters, bool isOn );
   void colour( const std::string &parameters );

   std::vector<Row> cells_, others_; // a full screen leaves what was before as it was
   size_t row_ = 0, column_ = 0;
   size_t otherRow_ = 0, otherColumn_ = 0;
   size_t top_ = 0, bottom_; // of what scrolls
   std::string rest_{};      // of a sequence whose end is still to come
   std::string last_{};
   bool isFullScreen_ = false, isCursorShown_ = true, isColoured_ = false;
   size_t written_ = 0;
};

} // namespace TestSupport
