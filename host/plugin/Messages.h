#pragma once

#include "boardfiles/Board.h"
#include "boardfiles/Kind.h"
#include "host/State.h"
#include "host/plugin/Action.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>

// What the parent and the child that holds the plug-in send each other; Child.proto has their form
// on the socket. A command is answered by Begun, traces and values as they come, and Done.
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
// pl_<kind>_add; the object has this number from then on.
struct AddCommand {
   size_t object = 0;
   BoardFiles::ObjectDescription description{};
};
// All values of an object that was added.
struct ReadCommand {
   size_t object = 0;
};
// One operation of an object; one reading gives its result.
struct ActCommand {
   size_t object = 0;
   Action action{};
};
using Command = std::variant<LoadCommand, InitCommand, AddCommand, ReadCommand, ActCommand>;

// The child calls the plug-in now: "pl_led_init", "pl_led_add" or a value's name.
struct Begun {
   std::string operation{};
};
struct Trace {
   int level = 0;
   std::string text{};
   // Set when a timer of the plug-in wrote it: the object during whose add the timer was made.
   std::optional<size_t> timerOwner{};
};
// The end of a command; no fault when it succeeded.
struct Done {
   std::optional<Fault> fault{};
};
using Event = std::variant<Begun, Trace, Reading, Done>;

// A message with its length, as it is sent.
std::string encode( const Command &command );
std::string encode( const Event &event );

// A message without its length. Nothing when the bytes are not such a message.
std::optional<Command> decodeCommand( std::string_view bytes );
std::optional<Event> decodeEvent( std::string_view bytes );

} // namespace Host
