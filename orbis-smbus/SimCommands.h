#pragma once

#include "smbus/Control.pb.h"

#include <string>
#include <vector>

namespace CLI {
class App;
} // namespace CLI

namespace SmbusClient {

// The commands that control a simulated board, as sub-commands of the app. "sim" on the command
// line and each line of a scenario use this one list. Parsing fills the request, which outlives the
// app.
void describeSimCommands( CLI::App &, SmbusControl::Request & );

// One command in words: what follows "at TIME" in a scenario. Throws WrongCommand.
SmbusControl::Request parseSimCommand( std::vector<std::string> words );

} // namespace SmbusClient
