// What orbis-host shows of a board.
#pragma once

#include <map>
#include <set>
#include <string>

// The output of orbis-host show.
struct Shown {
   int exitCode;
   std::map<std::string, double> values;      // of objects that are "ok", by name
   std::map<std::string, std::string> texts;  // of slots: the description of the module
   std::set<std::string> absent;              // objects that are absent
   std::map<std::string, std::string> faults; // of the other objects: "state: words"
};

// Runs `orbis-host show` of the board in this folder, on the server at this socket.
Shown showBoard( const std::string &board, const std::string &socket );
