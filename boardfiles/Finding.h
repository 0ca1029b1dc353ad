// What is wrong in a file of a board, with the place where its author finds it.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace BoardFiles {

// A value in a file.
struct Place {
   std::string file{};
   unsigned line = 0; // from 1 on; 0: the file as a whole
   unsigned column = 0;
   std::string pointer{}; // the same place as a JSON pointer, for programs; empty for the root
};

// "FILE:LINE:COLUMN", or the file alone.
std::string toText( const Place &place );

struct Finding {
   enum class Severity { Error, Warning };

   Place place{};
   std::string object{}; // the name of the board's object concerned; empty when there is none
   std::string reason{};
   Severity severity = Severity::Error;

   bool isWarning() const { return severity == Severity::Warning; }
};

// One line: "FILE:LINE:COLUMN: NAME: REASON", without the parts that are empty. A warning says so.
std::string toText( const Finding &finding );

using Findings = std::vector<Finding>;

void report( Findings &findings, const Place &place, std::string reason );
void warn( Findings &findings, const Place &place, std::string reason );
bool hasErrors( const Findings &findings );

// All findings as one JSON list, for programs.
std::string toJson( const Findings &findings );

// A board file that can't be used; the text has a line for each error found.
struct BoardError : std::runtime_error {
   explicit BoardError( const Findings &findings );
   BoardError( const Place &place, const std::string &reason );
};

// Throws BoardError when there is an error among the findings.
void throwErrors( const Findings &findings );

} // namespace BoardFiles
