#pragma once

#include "boardfiles/Board.h"
#include "boardfiles/Kind.h"
#include "health/pmbus/Registers.h"
#include "host/State.h"
#include "host/plugin/Action.h"
#include "optics/Image.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

// The messages between the parent and the child with the plug-in. Child.proto is their form on the
// socket. The child answers a command with traces and readings, and at the end Done.
namespace Host {

// Which traces of the plug-in the parent wants: those up to a level, and of those above it the ones
// that begin so. A plug-in makes many traces for each operation.
struct TraceFilter {
   int level = 7;
   std::vector<std::string> beginnings{};
};
// Loads the plug-in, and keeps the topology for the init functions.
struct LoadCommand {
   std::string plugin{};
   std::string topology{};
   TraceFilter traces{};
};
// Calls pl_<kind>_init.
struct InitCommand {
   BoardFiles::Kind kind{};
};
// Calls pl_<kind>_add. The object has this number from then on.
struct AddCommand {
   size_t object = 0;
   BoardFiles::ObjectDescription description{};
};
// Reads all values of objects that were added, one after the other. Each has a Done of its own.
struct ReadCommand {
   std::vector<size_t> objects{};
   std::vector<size_t> fresh{}; // of them, modules that were plugged since they were read
};
// Calls one operation of an object. One reading gives its result.
struct ActCommand {
   size_t object = 0;
   Action action{};
};
using Command = std::variant<LoadCommand, InitCommand, AddCommand, ReadCommand, ActCommand>;

struct Trace {
   int level = 0;
   std::string text{};
   // For traces of a timer: the object for which the plug-in made the timer.
   std::optional<size_t> timerOwner{};
};
// What a supply said of its limits, behind the reading of its status.
struct SupplyLimits {
   Health::Pmbus::Registers registers{};
};
// What was read of a module's memory, in front of the reading that tells how that went.
struct ModuleMemory {
   Optics::Image image{};
   bool begins = false; // nothing that was read before counts any more
};
// The end of a command, or of one object's reading. Without a fault it succeeded.
struct Done {
   std::optional<Fault> fault{};
};
using Event = std::variant<Trace, Reading, Done, SupplyLimits, ModuleMemory>;

// A message with its length in front, ready to send.
std::string encode( const Command &command );
std::string encode( const Event &event );

// Read a message without its length. Nothing when the bytes are not such a message.
std::optional<Command> decodeCommand( std::string_view bytes );
std::optional<Event> decodeEvent( std::string_view bytes );

} // namespace Host
