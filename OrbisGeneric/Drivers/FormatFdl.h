// A text with {keys} to fill in: the description line of a module (FDL) from its template.
#pragma once

#include <string>

namespace Drivers {

// No escape for a brace, no default for a key. A pass runs from start() to charPtr(); setting or
// reading outside one, or setting a key that is not there, is an assertion failure.
class FormatFdl {
 public:
   explicit FormatFdl( std::string format ) : template_( std::move( format ) ) {}

   void start();
   // Replaces the first {key} in the text, and only that: a key that stands twice wants two calls,
   // and a value that holds a braced key can be filled by a later call. Returns true.
   bool set( std::string key, std::string value );
   // The filled text, valid until the next start(); keys that were never set stand in it.
   const char *charPtr();

 private:
   bool active_ = false;
   std::string text_;
   std::string template_;
};

} // namespace Drivers
