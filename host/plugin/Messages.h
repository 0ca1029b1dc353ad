#pragma once

#include "boardfiles/Board.h"
#include "boardfiles/Kind.h"
#include "host/State.h"
#include "host/plugin/Action.h"

#include <optional>
#include <string>
#include <variant>

// What the parent and the child that holds the plug-in say to each other: one line of JSON each.
// A command is answered by Begun, traces and values as they come, and Done.
namespace Host {

// Load the plug-in; the topology is kept for the kinds' init functions.
struct LoadCommand {
   std::string plugin{};
   std::string topology{};
};
// pl_<kind>_init
struct InitCommand {
   BoardFiles::Kind kind{};
};
// pl_<kind>_add; the object is known by its number from then on.
struct AddCommand {
   size_t object = 0;
   BoardFiles::ObjectDescription description{};
};
// All values of an object that was added.
struct ReadCommand {
   size_t object = 0;
};
// Something that an object is asked to do; answered by one reading as well.
struct ActCommand {
   size_t object = 0;
   Action action{};
};
using Command = std::variant<LoadCommand, InitCommand, AddCommand, ReadCommand, ActCommand>;

// The child is about to call the plug-in: "pl_led_init", "pl_led_add" or a value's name.
struct Begun {
   std::string operation{};
};
struct Trace {
   int level = 0;
   std::string text{};
   // Told between commands, by a timer that was made when this object was added.
   std::optional<size_t> timerOf{};
};
// How the command ended; no fault when it went well.
struct Done {
   std::optional<Fault> fault{};
};
using Event = std::variant<Begun, Trace, Reading, Done>;

// One line, with its line feed.
std::string encode( const Command &command );
std::string encode( const Event &event );

// Nothing when the line is no such message.
std::optional<Command> decodeCommand( const std::string &line );
std::optional<Event> decodeEvent( const std::string &line );

} // namespace Host
