#pragma once

#include "smbus/Control.pb.h"

#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

namespace SmbusClient {

// Words that are no command; the text says what is wrong with them.
struct NoCommand : std::runtime_error {
   using std::runtime_error::runtime_error;
};

// What the commands are, one on a line, for the help.
extern const char *const simCommands;

// A command as it stands behind "sim", and behind "at TIME" in a scenario. Throws NoCommand.
SmbusControl::Request parseSim( const std::vector<std::string> &words );

// A whole decimal number, "12" or "0.5"; "3s" or "250ms". Throw NoCommand.
double parseReal( const std::string &text );
double parseSeconds( const std::string &text );

} // namespace SmbusClient
