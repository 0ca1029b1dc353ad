#pragma once

#include "boardfiles/HealthKeys.h"
#include "host/plugin/Messages.h"
#include "host/session/BackOff.h"
#include "optics/Image.h"
#include "optics/Module.h"

#include <map>
#include <set>
#include <string>

namespace Host {

// What was last read of a module.
struct ModuleRecord {
   Optics::Image image{};
   Optics::Module module{};
   std::set<std::string> flags{}; // of readings that failed halfway before the last one
   std::map<std::string, BoardFiles::ValueLimits> limits{}; // its own
   Time at{};
};

// What was last read of each module, by its object.
class ModuleRecords {
 public:
   // Comes in front of the reading that tells whether it is complete.
   void heard( size_t object, const ModuleMemory &memory ) { heard_[object] = memory; }
   // All of it was read. Where the module says that it is not ready, its flags stay as those of a
   // part do. Null if that is no module of a known standard.
   const ModuleRecord *complete( size_t object, Time now );
   // Only a part of it could be read, which has cleared the flags in it: they stay until all was
   // read. Null if nothing is known of the module.
   const ModuleRecord *incomplete( size_t object, Time now );
   // The module was taken out.
   void gone( size_t object );

   // Null when nothing was read, or the module was taken out.
   const ModuleRecord *find( size_t object ) const;

 private:
   // Puts what was heard into the record. Null if that is no module of a known standard.
   ModuleRecord *update( size_t object, Time now );
   const ModuleRecord *incomplete( size_t object, ModuleRecord &record );

   std::map<size_t, ModuleMemory> heard_{};
   std::map<size_t, std::set<std::string>> missed_{}; // flags of readings that failed halfway
   std::map<size_t, ModuleRecord> records_{};
};

} // namespace Host
