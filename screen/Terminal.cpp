#include "screen/Terminal.h"

#include "screen/Ascii.h"

#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <langinfo.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

#define NCURSES_NOMACROS
#include <curses.h>
#include <term.h>
// Macros for numbers that nobody needs here.
#undef columns
#undef lines

namespace Screen {
namespace {

winsize sizeOfTerminal() {
   winsize size{};
   if ( ::ioctl( STDOUT_FILENO, TIOCGWINSZ, &size ) != 0 || !size.ws_row || !size.ws_col )
      size = { .ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0 };
   return size;
}

// The pairs of colours; 0 is the terminal's own.
short pairOf( Style style ) {
   switch ( style ) {
   case Style::Good:
      return 1;
   case Style::Warning:
      return 2;
   case Style::Critical:
      return 3;
   case Style::Unknown:
      return 4;
   default:
      return 0;
   }
}

void setUpColours() {
   const char *none = std::getenv( "NO_COLOR" );
   if ( ( none && *none ) || !::has_colors() )
      return;
   ::start_color();
   const bool hasDefault = ::use_default_colors() == OK;
   const short background = hasDefault ? -1 : COLOR_BLACK;
   ::init_pair( pairOf( Style::Good ), COLOR_GREEN, background );
   ::init_pair( pairOf( Style::Warning ), COLOR_YELLOW, background );
   ::init_pair( pairOf( Style::Critical ), COLOR_RED, background );
   ::init_pair( pairOf( Style::Unknown ), COLOR_MAGENTA, background );
}

attr_t attributesOf( const Span &span ) {
   attr_t attributes = A_NORMAL;
   if ( span.style == Style::Strong || span.style == Style::Critical )
      attributes |= A_BOLD;
   if ( span.style == Style::Faint )
      attributes |= A_DIM;
   if ( span.isSelected || span.style == Style::Bar )
      attributes |= A_REVERSE;
   return attributes;
}

std::string *collected = nullptr;
int collect( int byte ) {
   *collected += static_cast<char>( byte );
   return byte;
}

// The bytes that end what newterm() and draw() may have begun.
std::string leavingBytes() {
   std::string bytes;
   collected = &bytes;
   for ( const char *name : { "sgr0", "op", "rmkx", "cnorm", "rmcup" } ) {
      const char *text = ::tigetstr( name );
      if ( text && text != reinterpret_cast<const char *>( -1 ) )
         ::tputs( text, 1, collect );
   }
   return bytes;
}

// Terminals that stay in their usual mode send these.
void defineKeys() {
   for ( const auto &[bytes, key] :
         { std::pair( "\x1b[A", KEY_UP ), std::pair( "\x1b[B", KEY_DOWN ),
           std::pair( "\x1b[C", KEY_RIGHT ), std::pair( "\x1b[D", KEY_LEFT ),
           std::pair( "\x1b[H", KEY_HOME ), std::pair( "\x1b[F", KEY_END ),
           std::pair( "\x1b[1~", KEY_HOME ), std::pair( "\x1b[4~", KEY_END ),
           std::pair( "\x1b[5~", KEY_PPAGE ), std::pair( "\x1b[6~", KEY_NPAGE ) } )
      ::define_key( bytes, key );
}

std::optional<Key> keyOf( wint_t code ) {
   switch ( code ) {
   case KEY_UP:
      return Key::Up;
   case KEY_DOWN:
      return Key::Down;
   case KEY_LEFT:
      return Key::Left;
   case KEY_RIGHT:
      return Key::Right;
   case KEY_PPAGE:
      return Key::PageUp;
   case KEY_NPAGE:
      return Key::PageDown;
   case KEY_HOME:
      return Key::Home;
   case KEY_END:
      return Key::End;
   case KEY_ENTER:
      return Key::Enter;
   case KEY_BACKSPACE:
   case KEY_DC:
      return Key::Backspace;
   default:
      return {};
   }
}

std::optional<Press> pressOf( wint_t code ) {
   switch ( code ) {
   case '\r':
   case '\n':
      return Press{ Key::Enter };
   case '\t':
      return Press{ Key::Tab };
   case 27:
      return Press{ Key::Escape };
   case 8:
   case 127:
      return Press{ Key::Backspace };
   default:
      break;
   }
   if ( code < ' ' )
      return {};
   std::string bytes( MB_CUR_MAX, '\0' );
   std::mbstate_t state{};
   const size_t count = std::wcrtomb( bytes.data(), static_cast<wchar_t>( code ), &state );
   if ( count == static_cast<size_t>( -1 ) )
      return {};
   bytes.resize( count );
   return Press{ Key::Text, bytes };
}

} // namespace

struct Terminal::Handle {
   SCREEN *screen = nullptr;
   FILE *input = nullptr;
   bool isAscii = false;

   ~Handle() {
      if ( screen )
         ::delscreen( screen );
      if ( input )
         std::fclose( input );
   }
};

bool Terminal::isAvailable() { return ::isatty( STDOUT_FILENO ); }

bool Terminal::canDraw() {
   int error = 0;
   if ( !isAvailable() || ::setupterm( nullptr, STDOUT_FILENO, &error ) != OK )
      return false;
   const char *move = ::tigetstr( "cup" );
   const bool can = move && move != reinterpret_cast<const char *>( -1 );
   ::del_curterm( ::cur_term );
   return can;
}

std::optional<size_t> Terminal::width() {
   return isAvailable() ? std::optional<size_t>( sizeOfTerminal().ws_col ) : std::nullopt;
}

Terminal::Terminal() : handle_( std::make_unique<Handle>() ) {
   std::setlocale( LC_CTYPE, "" );
   handle_->isAscii = std::strcmp( ::nl_langinfo( CODESET ), "UTF-8" ) != 0;
   // Opens the terminal a second time. Else standard input would stay non-blocking for other
   // programs.
   const char *name = ::ttyname( STDOUT_FILENO );
   keyboard_ = name ? ::open( name, O_RDONLY | O_NOCTTY | O_CLOEXEC ) : -1;
   handle_->input = keyboard_ >= 0 ? ::fdopen( keyboard_, "r" ) : nullptr;
   if ( !handle_->input || ::tcgetattr( STDOUT_FILENO, &before_ ) != 0 )
      throw std::runtime_error(
         fmt::format( "the terminal can't be opened: {}", std::strerror( errno ) ) );
   handle_->screen = ::newterm( nullptr, stdout, handle_->input );
   if ( !handle_->screen )
      throw std::runtime_error( "the terminal can't be set up" );
   ::cbreak();
   ::noecho();
   ::nonl();
   // Ctrl-C must not discard the text that restores the screen.
   termios during{};
   ::tcgetattr( STDOUT_FILENO, &during );
   during.c_lflag |= NOFLSH;
   ::tcsetattr( STDOUT_FILENO, TCSANOW, &during );
   ::def_prog_mode();
   ::nodelay( ::stdscr, true );
   ::keypad( ::stdscr, true );
   defineKeys();
   ::set_escdelay( 150 ); // a slow line may pause within a key
   ::curs_set( 0 );
   setUpColours();
   rescue_ = std::make_unique<Rescue>( STDOUT_FILENO, before_, leavingBytes() );
}

Terminal::~Terminal() {
   ::endwin();
   ::tcsetattr( STDOUT_FILENO, TCSANOW, &before_ );
}

size_t Terminal::rows() const { return sizeOfTerminal().ws_row; }
size_t Terminal::columns() const { return sizeOfTerminal().ws_col; }

void Terminal::draw( const Picture &picture ) {
   const winsize size = sizeOfTerminal();
   if ( size.ws_row != ::LINES || size.ws_col != ::COLS )
      ::resizeterm( size.ws_row, size.ws_col );
   ::erase();
   for ( size_t i = 0; i < picture.size() && i < size.ws_row; ++i ) {
      ::move( static_cast<int>( i ), 0 );
      for ( const Span &span : clip( picture[i], size.ws_col ) ) {
         ::attr_set( attributesOf( span ), pairOf( span.style ), nullptr );
         ::addstr( ( handle_->isAscii ? toAscii( span.text ) : span.text ).c_str() );
      }
   }
   ::attr_set( A_NORMAL, 0, nullptr );
   ::refresh();
}

std::optional<Press> Terminal::nextKey() {
   for ( ;; ) {
      wint_t code = 0;
      const int kind = ::get_wch( &code );
      if ( kind == ERR )
         return {};
      if ( kind == KEY_CODE_YES ) {
         if ( const auto key = keyOf( code ) )
            return Press{ *key };
      } else if ( auto press = pressOf( code ) ) {
         return press;
      }
   }
}

void Terminal::suspend() {
   ::endwin();
   struct sigaction ours {
   }, stop{};
   stop.sa_handler = SIG_DFL;
   ::sigaction( SIGTSTP, &stop, &ours );
   ::raise( SIGTSTP ); // goes on here when the process is continued
   ::sigaction( SIGTSTP, &ours, nullptr );
   ::tcgetattr( STDOUT_FILENO, &before_ ); // as the shell has it now
   ::clearok( ::curscr, true );
   ::refresh();
}

} // namespace Screen
