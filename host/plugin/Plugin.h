#pragma once

#include "boardfiles/Board.h"
#include "boardfiles/Kind.h"

#include <pl.h>
#include <string>
#include <variant>

namespace Host {

// The record of an object that a plug-in made, or a null pointer.
using Record = std::variant<pl_slot *, pl_led *, pl_temp_sensor *, pl_fan *, pl_xcvr *, pl_psu *,
                            pl_gpio *, pl_smbus *, pl_system *>;

bool isNull( const Record &record );

// A driver plug-in. It stays loaded until the process ends.
class Plugin {
 public:
   // Throws std::runtime_error with the loader's error text.
   explicit Plugin( const std::string &path );

   // Calls pl_<kind>_init. The plug-in keeps the pointer to `topology`.
   pl_status init( BoardFiles::Kind kind, const char *topology ) const;

   // Calls pl_<kind>_add. The plug-in keeps pointers to the texts of `description`.
   Record add( const BoardFiles::ObjectDescription &description ) const;

 private:
   // Throws std::runtime_error when the plug-in does not have this function.
   template <class Function>
   Function *symbol( const std::string &name ) const;

   void *library_;
};

} // namespace Host
