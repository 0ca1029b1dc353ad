#pragma once

#include "boardfiles/Board.h"
#include "boardfiles/Kind.h"

#include <pl.h>
#include <string>
#include <variant>

namespace Host {

// The record of an object that a plug-in made; null where it made none.
using Record = std::variant<pl_slot *, pl_led *, pl_temp_sensor *, pl_fan *, pl_xcvr *, pl_psu *,
                            pl_gpio *, pl_smbus *, pl_system *>;

bool isNull( const Record &record );

// A driver plug-in, loaded until the process ends.
class Plugin {
 public:
   // Throws std::runtime_error with the loader's words.
   explicit Plugin( const std::string &path );

   // pl_<kind>_init. The text must outlive the process's use of the plug-in.
   pl_status init( BoardFiles::Kind kind, const char *topology ) const;

   // pl_<kind>_add. The description must live on too.
   Record add( const BoardFiles::ObjectDescription &description ) const;

 private:
   // Throws std::runtime_error when the plug-in has no such function.
   template <class Function>
   Function *symbol( const std::string &name ) const;

   void *library_;
};

} // namespace Host
