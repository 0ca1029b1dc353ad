#pragma once

#include "host/State.h"
#include "host/plugin/Action.h"
#include "host/plugin/Plugin.h"

#include <functional>
#include <string>

// Calls the operations of an object that the plug-in made. An exception that an operation throws
// becomes the fault of its reading.
namespace Host {

// Receives what comes of the calls.
struct ReadingSink {
   std::function<void( const std::string &name )> begun; // called before the operation
   std::function<void( const Reading & )> done;
};

// Calls every operation that reads something. LEDs and SMBus proxies have none.
void read( const Record &record, const ReadingSink &sink );

// Calls one operation. It gives one reading with the operation's name, and its result as value
// where it has one.
void act( const Record &record, const Action &action, const ReadingSink &sink );

} // namespace Host
