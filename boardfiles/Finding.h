#pragma once

#include <cstddef>
#include <rapidjson/pointer.h>
#include <string>
#include <string_view>
#include <vector>

namespace BoardFiles {

// Something wrong in a file of a board, told so that its author finds the place.
struct Finding {
   std::string file;   // the file's path
   std::string place;  // "line:column" where text doesn't parse, a JSON pointer elsewhere
   std::string object; // the name of the board's object concerned; empty when there is none
   std::string reason;
};

// One line: "FILE:PLACE: NAME: REASON", without the parts that are empty.
std::string toText( const Finding &finding );

using Findings = std::vector<Finding>;

// Where a check stands: a value in a file, and the object of the board that it belongs to.
struct Place {
   std::string file;
   rapidjson::Pointer pointer{};
   std::string object{};

   // The member or the array element below this place.
   Place operator/( std::string_view key ) const;
   Place operator/( size_t index ) const;

   std::string pointerText() const;
};

// Adds a finding at a place.
void report( Findings &findings, const Place &place, std::string reason );

} // namespace BoardFiles
