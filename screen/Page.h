// A page that may be longer than the window in which it is seen.
#pragma once

#include "screen/Keys.h"
#include "screen/Picture.h"

#include <string>
#include <vector>

namespace Screen {

// A place on the page that can be selected.
struct Target {
   std::string id{};
   size_t line = 0;
   size_t lines = 1;
   size_t column = 0;
   size_t width = 0;     // 0: to the end of the line
   bool isTitle = false; // Tab goes there
};

struct Page {
   std::vector<Line> lines{};
   std::vector<Target> targets{}; // from top to bottom, and from left to right

   const Target *find( const std::string &id ) const;
};

// What is selected on a page, and which lines are seen. The selection stays with what it is on
// while the page changes around it. A page without targets only scrolls.
class PageView {
 public:
   // Whether this key moves something.
   bool press( Key key, const Page &page, size_t rows );
   void select( const std::string &id ) { selected_ = id; }
   // The id of what is selected; empty where there is nothing.
   const std::string &selected() const { return selected_; }

   // The lines that are seen, `rows` of them, with the selection marked and in sight.
   Picture draw( const Page &page, size_t columns, size_t rows );
   // "1-20 of 57"; empty when all is seen.
   std::string position( const Page &page, size_t rows ) const;

 private:
   void keepSelection( const Page &page );
   void moveTo( const Page &page, size_t target );
   void moveByLine( const Page &page, size_t from, bool isDown );
   void keepInSight( const Page &page, size_t rows );
   bool scroll( Key key, const Page &page, size_t rows );

   std::string selected_{};
   size_t last_ = 0; // where it was among the targets
   size_t top_ = 0;
};

} // namespace Screen
