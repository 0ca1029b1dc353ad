#pragma once

#include "host/State.h"
#include "host/plugin/Action.h"
#include "host/plugin/Plugin.h"

#include <functional>
#include <string_view>

// Calls operations of the plug-in's objects. An exception of an operation becomes the fault of its
// reading.
namespace Host {

// The reading of a slot or a cage that tells whether there is a module.
inline constexpr auto presenceName = "presence";

// Receives the results of the calls.
struct ReadingSink {
   std::function<void( std::string_view name )> begun; // called before the operation
   std::function<void( const Reading & )> done;
};

// Calls every operation that reads something. LEDs and SMBus proxies have none.
void read( const Record &record, const ReadingSink &sink );

// Calls one operation. The result is one reading with the operation's name.
void act( const Record &record, const Action &action, const ReadingSink &sink );

} // namespace Host
