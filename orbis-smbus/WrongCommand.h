#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace SmbusClient {

// Words that are not a command; the text says why.
struct WrongCommand : std::runtime_error {
   using std::runtime_error::runtime_error;
};

// "explode is not a command. Commands: list, get", with the nearest one if it is similar.
std::string unknownCommand( const std::string &word, const std::vector<std::string> &known );

} // namespace SmbusClient
