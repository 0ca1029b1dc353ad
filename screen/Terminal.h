#pragma once

#include "screen/Keys.h"
#include "screen/Picture.h"
#include "screen/Rescue.h"

#include <memory>
#include <optional>
#include <termios.h>

namespace Screen {

// Standard output as a terminal in full-screen mode, drawn by ncurses: only what has changed is
// written. The destructor puts it back as it was; so does a crash. One at a time.
class Terminal {
 public:
   // Whether standard output is a terminal.
   static bool isAvailable();
   // Whether its kind (TERM) can be drawn on.
   static bool canDraw();
   // Its width, where it is a terminal.
   static std::optional<size_t> width();

   // Colours unless NO_COLOR is set. Throws std::runtime_error.
   Terminal();
   ~Terminal();
   Terminal( const Terminal & ) = delete;
   Terminal &operator=( const Terminal & ) = delete;

   // The size now.
   size_t rows() const;
   size_t columns() const;

   void draw( const Picture &picture );

   // A descriptor that can be read when a key was pressed.
   int keyboard() const { return keyboard_; }
   // A key that was pressed; nothing when there is none (any more).
   std::optional<Press> nextKey();

   // Leaves the full-screen mode, stops this process as Ctrl-Z does, and comes back with it.
   void suspend();

 private:
   termios before_{};
   int keyboard_ = -1;
   std::unique_ptr<Rescue> rescue_{};
   struct Handle; // of ncurses
   std::unique_ptr<Handle> handle_;
};

} // namespace Screen
