// The rules of the house. Each returns its findings, one sentence for each place that breaks it.
#pragma once

#include "SourceTree.h"

namespace House {

using Findings = std::vector<std::string>;

// What the files of a folder may include, in addition to their own folder. A path that ends in / is
// a folder with everything below it, any other path is one file.
struct Allowance {
   std::string folder;
   std::vector<std::string> mayInclude;
};

// The folders of a room, lowest first. "." is the room's own folder.
struct Order {
   std::string room;
   std::vector<std::string> folders;
};

// Every room includes only itself and what its allowance names.
Findings forbiddenIncludes( const SourceTree &tree, const std::vector<Allowance> &rooms );

// Every folder at the root that has sources is one of the rooms or of the `others`.
Findings unknownRooms( const SourceTree &tree, const std::vector<Allowance> &rooms,
                       const std::vector<std::string> &others );

// Inside a room a header includes only headers of its own folder and of folders below it.
Findings upwardIncludes( const SourceTree &tree, const std::vector<Order> &orders );

// No header includes itself through others.
Findings includeCircles( const SourceTree &tree );

// Inside a room that has such allowances, a .cpp file includes only its own folder, the room's own
// folder, and what the allowance of its folder names.
Findings forbiddenCrossings( const SourceTree &tree, const std::vector<Allowance> &folders );

// No room has more than `percent` of the lines of all rooms.
Findings largeRooms( const SourceTree &tree, const std::vector<Allowance> &rooms, size_t percent );

// Every .cpp file of the room includes the header, or a header that does.
Findings sourcesWithout( const SourceTree &tree, const std::string &room,
                         const std::string &header );

// Every *Test.cpp below tests/ is built: the CMakeLists.txt of its folder uses it, and
// add_subdirectory leads from tests/ to that folder.
Findings forgottenTests( const SourceTree &tree );

} // namespace House
