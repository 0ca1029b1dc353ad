#pragma once

#include "host/terminal/Snapshot.h"
#include "screen/Page.h"

#include <set>
#include <string>
#include <vector>

namespace Host {

// What a person has chosen to see of a board, and how that looks. It knows no terminal: keys in,
// pictures out.
class WatchView {
 public:
   // False: the person wants to leave.
   bool press( const Screen::Press &press, const Snapshot &snapshot, size_t columns, size_t rows );
   Screen::Picture draw( const Snapshot &snapshot, size_t columns, size_t rows );

   // The object whose detail is shown; empty: none.
   std::string object() const;

 private:
   bool pressInList( const Screen::Press &press, const Snapshot &snapshot, size_t columns,
                     size_t rows );
   bool typeFilter( const Screen::Press &press );
   void enter( const Snapshot &snapshot, size_t columns );
   void fold( const Screen::Press &press, const std::vector<std::string> &titles );
   Screen::Page listPage( const Snapshot &snapshot, size_t columns ) const;
   Screen::Page pageOf( const Snapshot &snapshot, size_t columns ) const;
   Screen::PageView &viewOf() { return isHelp_ ? help_ : detail_.empty() ? list_ : detailView_; }
   Screen::Line footer( const Screen::Page &page, size_t columns, size_t rows );

   std::set<std::string> folded_{};
   std::string filter_{};
   bool types_ = false;   // the filter
   std::string detail_{}; // the id of what is looked at
   bool isHelp_ = false;
   Screen::PageView list_{}, detailView_{}, help_{};
};

} // namespace Host
