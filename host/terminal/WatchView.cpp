#include "host/terminal/WatchView.h"

#include "host/Times.h"
#include "host/terminal/BoardSections.h"
#include "host/terminal/HealthText.h"
#include "host/terminal/ObjectRows.h"
#include "host/terminal/Standing.h"
#include "screen/Sections.h"
#include "screen/Width.h"
#include "screen/Wrap.h"

#include <fmt/format.h>

namespace Host {
namespace {

using Screen::Key;
using Screen::Style;

constexpr auto helpText = R"(Keys
  up, down           go from line to line
  left, right        go from cell to cell; on a title: fold, unfold
  PgUp, PgDn         go a screen further
  Home, End          go to the first, to the last
  Enter              on a title: fold or unfold; else show all that is known of it
  space              the same
  Tab                go to the next title
  f                  fold all sections, or unfold them
  /                  show only what has the text that is typed; Enter ends
                     typing, Esc shows everything again
  ?                  this help
  q                  back; in the list: quit
  Esc                back; in the list: show everything again
  Ctrl-Z             stop, until "fg"

Signs, which stand beside the colours
  !!  critical       a limit was crossed, or something is lost
   !  warning
   ?  unreadable     the last attempt failed
   ~  stale          the last good reading is too old
   -  absent         there is no module

Causes come first: what is wrong and has no other explanation. What one
explains is named there, and says "because of" itself.)";

std::vector<std::string> helpLines() {
   std::vector<std::string> lines;
   const std::string text = helpText;
   for ( size_t begin = 0; begin <= text.size(); ) {
      const size_t end = std::min( text.find( '\n', begin ), text.size() );
      lines.push_back( text.substr( begin, end - begin ) );
      begin = end + 1;
   }
   return lines;
}

// At the top: the board, what is wrong in one line, the time; and whether all of it is old.
Screen::Picture headOf( const Snapshot &snapshot, size_t columns ) {
   const std::string time = " " + localTimeText( snapshot.now ).substr( 11 ) + " ";
   const std::string left =
      fmt::format( " {}  {}", snapshot.board.substr( snapshot.board.rfind( '/' ) + 1 ),
                   summaryOf( snapshot.health ) );
   const size_t room = columns > time.size() ? columns - time.size() : 0;
   Screen::Picture head{ { { Screen::fill( left, room ) + time, Style::Bar } } };
   if ( snapshot.trouble.empty() )
      return head;
   std::vector<std::string> lines;
   Screen::wrap( lines, "!! " + snapshot.trouble, 3, columns );
   const auto styled = Screen::linesOf( lines, Style::Critical );
   head.insert( head.end(), styled.begin(), styled.end() );
   return head;
}

std::vector<std::string> titlesOf( const Snapshot &snapshot, size_t columns ) {
   std::vector<std::string> titles;
   for ( const Screen::Section &section : sectionsOf( snapshot, columns ) )
      titles.push_back( section.title );
   return titles;
}

size_t roomBelow( const Screen::Picture &head, size_t rows ) {
   return rows > head.size() + 1 ? rows - head.size() - 1 : 1;
}

} // namespace

std::string WatchView::object() const { return objectIn( detail_ ).value_or( "" ); }

Screen::Page WatchView::listPage( const Snapshot &snapshot, size_t columns ) const {
   return Screen::pageOf( sectionsOf( snapshot, columns ), folded_, filter_, columns );
}

Screen::Page WatchView::pageOf( const Snapshot &snapshot, size_t columns ) const {
   if ( isHelp_ )
      return { Screen::linesOf( helpLines() ), {} };
   if ( detail_.empty() )
      return listPage( snapshot, columns );
   const auto lines = detailOf( snapshot, detail_, columns );
   return { Screen::linesOf( lines.empty() ? std::vector<std::string>{ "it is gone" } : lines ),
            {} };
}

bool WatchView::press( const Screen::Press &press, const Snapshot &snapshot, size_t columns,
                       size_t rows ) {
   if ( types_ )
      return typeFilter( press );
   const size_t room = roomBelow( headOf( snapshot, columns ), rows );
   const bool isBack = press.is( "q" ) || press.key == Key::Escape || press.key == Key::Backspace;
   if ( press.is( "?" ) ) {
      isHelp_ = !isHelp_;
      return true;
   }
   if ( isHelp_ || !detail_.empty() ) {
      if ( !isBack )
         viewOf().press( press.key, pageOf( snapshot, columns ), room );
      else if ( isHelp_ )
         isHelp_ = false;
      else
         detail_.clear();
      return true;
   }
   return pressInList( press, snapshot, columns, room );
}

bool WatchView::pressInList( const Screen::Press &press, const Snapshot &snapshot, size_t columns,
                             size_t rows ) {
   if ( press.is( "q" ) )
      return false;
   if ( press.key == Key::Escape ) {
      filter_.clear();
      return true; // and not the end: keys that this terminal has no name for begin with it
   }
   if ( press.is( "/" ) ) {
      types_ = true;
      filter_.clear();
   } else if ( press.key == Key::Enter || press.is( " " ) ) {
      enter( snapshot, columns );
   } else if ( !list_.press( press.key, listPage( snapshot, columns ), rows ) ) {
      fold( press, titlesOf( snapshot, columns ) );
   }
   return true;
}

// On a title: left folds it, right unfolds it. Anywhere: f folds all, or unfolds all.
void WatchView::fold( const Screen::Press &press, const std::vector<std::string> &titles ) {
   if ( press.is( "f" ) )
      folded_ =
         folded_.empty() ? std::set( titles.begin(), titles.end() ) : std::set<std::string>();
   for ( const std::string &title : titles )
      if ( list_.selected() == Screen::titleId( title ) ) {
         if ( press.key == Key::Left )
            folded_.insert( title );
         if ( press.key == Key::Right )
            folded_.erase( title );
      }
}

// Ctrl-C ends the program at any time.
bool WatchView::typeFilter( const Screen::Press &press ) {
   switch ( press.key ) {
   case Key::Text:
      filter_ += press.text;
      break;
   case Key::Backspace:
      while ( !filter_.empty() && ( filter_.back() & 0xC0 ) == 0x80 )
         filter_.pop_back();
      if ( !filter_.empty() )
         filter_.pop_back();
      break;
   case Key::Escape:
      filter_.clear();
      types_ = false;
      break;
   default:
      types_ = false;
   }
   return true;
}

void WatchView::enter( const Snapshot &snapshot, size_t columns ) {
   for ( const std::string &title : titlesOf( snapshot, columns ) )
      if ( list_.selected() == Screen::titleId( title ) ) {
         if ( folded_.erase( title ) == 0 )
            folded_.insert( title );
         return;
      }
   detail_ = shownFor( snapshot, list_.selected() );
   detailView_ = {};
}

Screen::Line WatchView::footer( const Screen::Page &page, size_t columns, size_t rows ) {
   std::string left = " q quit  ? help  / filter  Enter open, fold";
   if ( types_ )
      left = " /" + filter_ + "_";
   else if ( isHelp_ || !detail_.empty() )
      left = " q back  ? help";
   else if ( !filter_.empty() )
      left = fmt::format( " only what has \"{}\"  Esc everything  / another  q quit", filter_ );
   const std::string right = viewOf().position( page, rows ) + " ";
   const size_t room = columns > right.size() ? columns - right.size() : 0;
   return { { Screen::fill( left, room ) + right, Style::Bar } };
}

Screen::Picture WatchView::draw( const Snapshot &snapshot, size_t columns, size_t rows ) {
   Screen::Picture picture = headOf( snapshot, columns );
   const size_t room = roomBelow( picture, rows );
   Screen::Page page = pageOf( snapshot, columns );
   if ( page.lines.empty() )
      page.lines = Screen::linesOf( { "", " nothing has this text" } );
   const Screen::Picture body = viewOf().draw( page, columns, room );
   picture.insert( picture.end(), body.begin(), body.end() );
   picture.push_back( footer( page, columns, room ) );
   return picture;
}

} // namespace Host
