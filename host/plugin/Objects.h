#pragma once

#include "host/plugin/Messages.h"
#include "host/plugin/ModuleReader.h"
#include "host/plugin/ObjectCalls.h"
#include "host/plugin/Plugin.h"
#include "host/plugin/SupplyReader.h"

#include <functional>
#include <map>
#include <optional>
#include <string>

namespace Host {

// A plug-in and the objects of a board that it has brought up, by their numbers. An exception of
// the plug-in becomes the fault of the command.
class Objects {
 public:
   struct Sinks {
      ReadingSink readings;
      std::function<void( const Event & )> others; // what belongs to a reading
   };

   // Waits for a module that is busy.
   explicit Objects( ModuleReader::Pause pause ) : pause_( std::move( pause ) ) {}

   Done load( const std::string &plugin );
   // The plug-in keeps the pointer to `topology`.
   Done init( BoardFiles::Kind kind, const char *topology ) const;
   Done add( size_t object, const BoardFiles::ObjectDescription &description );
   // Reads all values. `fresh` as in ReadCommand.
   Done read( size_t object, bool fresh, const Sinks &sinks );
   Done act( const ActCommand &command, const Sinks &sinks ) const;

 private:
   void addModule( size_t object, const BoardFiles::ObjectDescription &description,
                   pl_smbus *first );

   const ModuleReader::Pause pause_;
   std::optional<Plugin> plugin_{};
   // The plug-in keeps pointers to the texts. A second try for an object uses the same texts.
   std::map<size_t, BoardFiles::ObjectDescription> descriptions_{};
   std::map<size_t, BoardFiles::ObjectDescription> secondOfModules_{};
   std::map<size_t, Record> records_{};
   std::map<size_t, SupplyReader> supplies_{};
   std::map<size_t, ModuleReader> modules_{};
};

} // namespace Host
