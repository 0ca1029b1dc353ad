#pragma once

#include "host/State.h"
#include "host/plugin/Plugin.h"

#include <functional>
#include <string>

namespace Host {

// Who is told how the reading of an object goes on.
struct ReadingSink {
   std::function<void( const std::string &name )> begun; // before the operation is called
   std::function<void( const Reading & )> done;
};

// Calls every operation of an object that reads something; none for LEDs and SMBus proxies. An
// exception that an operation throws is that reading's fault.
void read( const Record &record, const ReadingSink &sink );

} // namespace Host
