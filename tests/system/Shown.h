// What orbis-host tells of a board.
#pragma once

#include <map>
#include <set>
#include <string>

// What orbis-host show told.
struct Shown {
   int exitCode;
   std::map<std::string, double> values;      // of objects that are "ok", by name
   std::map<std::string, std::string> texts;  // of slots, whose module describes itself
   std::set<std::string> absent;              // of what can be pulled
   std::map<std::string, std::string> faults; // of the others: "state: words"
};

// Runs `orbis-host show` of the board in this folder, on the server at this socket.
Shown showBoard( const std::string &board, const std::string &socket );
