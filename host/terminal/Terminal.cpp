#include "host/terminal/Terminal.h"

#include "host/terminal/Table.h"
#include "screen/Width.h"

#include <algorithm>
#include <boost/asio.hpp>
#include <cstdio>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace Host {
namespace {

constexpr auto enterScreen = "\x1b[?1049h\x1b[?25l"; // alternate screen, no cursor
constexpr auto leaveScreen = "\x1b[?25h\x1b[?1049l";
constexpr auto home = "\x1b[H";
constexpr auto clearToEndOfLine = "\x1b[K";
constexpr auto clearBelow = "\x1b[J";

void write( const std::string &text ) {
   fmt::print( "{}", text );
   std::fflush( stdout );
}

// Of standard output, which is a terminal.
winsize sizeOfTerminal() {
   winsize size{};
   if ( ::ioctl( STDOUT_FILENO, TIOCGWINSZ, &size ) != 0 || !size.ws_row || !size.ws_col )
      size = { .ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0 };
   return size;
}

} // namespace

bool Terminal::isAvailable() { return ::isatty( STDOUT_FILENO ); }

std::optional<size_t> Terminal::columns() {
   return isAvailable() ? std::optional<size_t>( sizeOfTerminal().ws_col ) : std::nullopt;
}

Terminal::Terminal( boost::asio::io_context &loop, std::function<void( char )> key )
   : key_( std::move( key ) ), keyboard_( loop ) {
   // Opens the terminal a second time. Else standard input would stay non-blocking for other
   // programs.
   const char *name = ::ttyname( STDIN_FILENO );
   const int keyboard = name ? ::open( name, O_RDONLY | O_NOCTTY | O_CLOEXEC ) : -1;
   termios raw{};
   if ( keyboard >= 0 && ::tcgetattr( keyboard, &raw ) == 0 ) {
      before_ = raw;
      raw.c_lflag &= ~static_cast<tcflag_t>( ICANON | ECHO );
      raw.c_lflag |= NOFLSH; // Ctrl-C must not discard the text that restores the screen
      ::tcsetattr( keyboard, TCSANOW, &raw );
      keyboard_.assign( keyboard );
      readKeys();
   }
   write( enterScreen );
}

Terminal::~Terminal() {
   if ( before_ )
      ::tcsetattr( keyboard_.native_handle(), TCSANOW, &*before_ );
   write( leaveScreen );
}

void Terminal::readKeys() {
   keyboard_.async_read_some( boost::asio::buffer( &pressed_, 1 ),
                              [this]( const boost::system::error_code &failure, size_t ) {
                                 if ( failure )
                                    return;
                                 key_( pressed_ );
                                 readKeys();
                              } );
}

void Terminal::draw( const std::vector<std::string> &lines ) const {
   const winsize size = sizeOfTerminal();
   std::string screen = home;
   const size_t room = std::min<size_t>( lines.size(), size.ws_row - 1u );
   for ( size_t i = 0; i < room; ++i )
      screen += Screen::clip( lines[i], size.ws_col ) + clearToEndOfLine + "\r\n";
   write( screen + clearBelow );
}

} // namespace Host
