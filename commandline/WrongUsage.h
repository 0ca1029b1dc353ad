// What a program says about a command line that it doesn't take.
#pragma once

#include <string>

namespace CLI {
class App;
class ParseError;
} // namespace CLI

namespace CommandLine {

// What is wrong: an unknown command or option with the one that it is most like, else the error's
// own words.
std::string explain( const CLI::App &app, const CLI::ParseError &error );

// Prints the help or the version that was asked for and returns true. For an error it prints
// "PROGRAM: what is wrong" on standard error and returns false.
bool report( const CLI::App &app, const CLI::ParseError &end );

} // namespace CommandLine
