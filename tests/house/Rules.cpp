#include "Rules.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <regex>
#include <set>

namespace House {

namespace {

bool isAllowed( const Allowance &allowance, const std::string &path ) {
   return std::ranges::any_of( allowance.mayInclude, [&]( const std::string &allowed ) {
      return allowed.ends_with( '/' ) ? path.starts_with( allowed ) : path == allowed;
   } );
}

std::string listOf( const std::vector<std::string> &paths ) {
   return paths.empty() ? "nothing" : fmt::format( "{}", fmt::join( paths, ", " ) );
}

const Allowance *allowanceOf( const std::vector<Allowance> &allowances,
                              const std::string &folder ) {
   const auto found = std::ranges::find( allowances, folder, &Allowance::folder );
   return found == allowances.end() ? nullptr : &*found;
}

// Follows the includes of a header; path holds the headers on the way to it.
void followHeader( const SourceTree &tree, const std::string &header, std::set<std::string> &done,
                   std::vector<std::string> &path, Findings &findings ) {
   const auto start = std::ranges::find( path, header );
   if ( start != path.end() ) {
      findings.push_back( fmt::format(
         "{} includes itself: {} -> {}", header,
         fmt::join( std::vector<std::string>( start, path.end() ), " -> " ), header ) );
      return;
   }
   if ( !done.insert( header ).second )
      return;
   path.push_back( header );
   for ( const std::string &included : tree.files().at( header ).includes )
      followHeader( tree, included, done, path, findings );
   path.pop_back();
}

// The header is among the file's includes, or among theirs. Needs a tree without circles.
bool reaches( const SourceTree &tree, const std::string &path, const std::string &header ) {
   return std::ranges::any_of( tree.files().at( path ).includes, [&]( const std::string &name ) {
      return name == header || reaches( tree, name, header );
   } );
}

std::string withoutComments( const std::string &cmake ) {
   return std::regex_replace( cmake, std::regex( "#[^\n]*" ), "" );
}

// The folders that a CMakeLists.txt adds: add_subdirectory( NAME ), or a loop over names.
std::set<std::string> addedFolders( const std::string &cmake ) {
   static const std::regex one( R"(add_subdirectory\(\s*([\w./-]+)\s*\))" );
   static const std::regex loop(
      R"(foreach\(\s*(\w+)\s+([^)]*)\)\s*add_subdirectory\(\s*\$\{\1\}\s*\))" );
   static const std::regex word( R"([\w./-]+)" );
   std::set<std::string> folders;
   for ( std::sregex_iterator each( cmake.begin(), cmake.end(), one ), end; each != end; ++each )
      folders.insert( ( *each )[1] );
   for ( std::sregex_iterator each( cmake.begin(), cmake.end(), loop ), end; each != end; ++each ) {
      const std::string names = ( *each )[2];
      for ( std::sregex_iterator name( names.begin(), names.end(), word ); name != end; ++name )
         folders.insert( name->str() );
   }
   return folders;
}

std::string cmakeOf( const SourceTree &tree, const std::string &folder ) {
   const std::string path = folder + "/CMakeLists.txt";
   return tree.has( path ) ? withoutComments( tree.files().at( path ).text ) : "";
}

// A chain of add_subdirectory leads from tests/ to the folder.
bool isReached( const SourceTree &tree, const std::string &folder ) {
   if ( folder == "tests" )
      return true;
   for ( std::string above = folderOf( folder ); !above.empty(); above = folderOf( above ) ) {
      const std::string name = folder.substr( above.size() + 1 );
      if ( addedFolders( cmakeOf( tree, above ) ).contains( name ) && isReached( tree, above ) )
         return true;
   }
   return false;
}

// Names the test, or takes every *Test.cpp of the folder, as orbis_add_test does without TESTS.
bool usesTest( const std::string &cmake, const std::string &file ) {
   static const std::regex every( R"(\*Test\.cpp|orbis_add_test\((?![^)]*\bTESTS\b)[^)]*\))" );
   return cmake.find( file ) != std::string::npos || std::regex_search( cmake, every );
}

} // namespace

Findings forbiddenIncludes( const SourceTree &tree, const std::vector<Allowance> &rooms ) {
   Findings findings;
   for ( const auto &[path, file] : tree.files() ) {
      const Allowance *room = allowanceOf( rooms, roomOf( path ) );
      if ( !room )
         continue;
      for ( const std::string &included : file.includes ) {
         if ( roomOf( included ) != room->folder && !isAllowed( *room, included ) )
            findings.push_back( fmt::format( "{} includes {}; {} may include {}", path, included,
                                             room->folder, listOf( room->mayInclude ) ) );
      }
   }
   return findings;
}

Findings unknownRooms( const SourceTree &tree, const std::vector<Allowance> &rooms,
                       const std::vector<std::string> &others ) {
   Findings findings;
   for ( const auto &[path, file] : tree.files() ) {
      const std::string room = roomOf( path );
      if ( !path.ends_with( "CMakeLists.txt" ) && !allowanceOf( rooms, room ) &&
           std::ranges::find( others, room ) == others.end() )
         findings.push_back( fmt::format( "{} is in no room that a rule is written for", path ) );
   }
   return findings;
}

Findings upwardIncludes( const SourceTree &tree, const std::vector<Order> &orders ) {
   Findings findings;
   for ( const Order &order : orders ) {
      const std::string &room = order.room;
      const std::vector<std::string> &folders = order.folders;
      const auto levelOf = [&]( const std::string &path ) {
         const std::string folder = folderOf( path );
         const std::string inRoom = folder == room ? "." : folder.substr( room.size() + 1 );
         return std::ranges::find( folders, inRoom ) - folders.begin();
      };
      for ( const auto &[path, file] : tree.files() ) {
         if ( roomOf( path ) != room || !isHeader( path ) )
            continue;
         if ( levelOf( path ) == std::ssize( folders ) )
            findings.push_back(
               fmt::format( "{} is in a folder without a place in the order", path ) );
         for ( const std::string &included : file.includes ) {
            if ( roomOf( included ) == room && levelOf( included ) > levelOf( path ) )
               findings.push_back(
                  fmt::format( "{} includes {}; the folders of {}, lowest first: {}", path,
                               included, room, fmt::join( folders, ", " ) ) );
         }
      }
   }
   return findings;
}

Findings includeCircles( const SourceTree &tree ) {
   Findings findings;
   std::set<std::string> done;
   for ( const auto &[path, file] : tree.files() ) {
      std::vector<std::string> way;
      if ( isHeader( path ) )
         followHeader( tree, path, done, way, findings );
   }
   return findings;
}

Findings forbiddenCrossings( const SourceTree &tree, const std::vector<Allowance> &folders ) {
   Findings findings;
   for ( const auto &[path, file] : tree.files() ) {
      const std::string room = roomOf( path );
      const bool isRuled = std::ranges::any_of(
         folders, [&]( const Allowance &each ) { return roomOf( each.folder + "/" ) == room; } );
      if ( !isRuled || !path.ends_with( ".cpp" ) )
         continue;
      const Allowance *folder = allowanceOf( folders, folderOf( path ) );
      if ( !folder ) {
         findings.push_back( fmt::format( "{} is in a folder without an allowance", path ) );
         continue;
      }
      for ( const std::string &included : file.includes ) {
         const std::string target = folderOf( included );
         if ( roomOf( included ) == room && target != room && target != folder->folder &&
              !isAllowed( *folder, included ) )
            findings.push_back( fmt::format( "{} includes {}; sources of {} may include {}", path,
                                             included, folder->folder,
                                             listOf( folder->mayInclude ) ) );
      }
   }
   return findings;
}

Findings largeRooms( const SourceTree &tree, const std::vector<Allowance> &rooms, size_t percent ) {
   std::map<std::string, size_t> lines;
   size_t all = 0;
   for ( const auto &[path, file] : tree.files() ) {
      if ( !allowanceOf( rooms, roomOf( path ) ) || path.ends_with( "CMakeLists.txt" ) )
         continue;
      const auto count = static_cast<size_t>( std::ranges::count( file.text, '\n' ) );
      lines[roomOf( path )] += count;
      all += count;
   }
   Findings findings;
   for ( const auto &[room, count] : lines ) {
      if ( count * 100 > all * percent )
         findings.push_back( fmt::format( "{} has {} of {} lines; a room may have {} %", room,
                                          count, all, percent ) );
   }
   return findings;
}

Findings sourcesWithout( const SourceTree &tree, const std::string &room,
                         const std::string &header ) {
   Findings findings;
   for ( const auto &[path, file] : tree.files() )
      if ( roomOf( path ) == room && path.ends_with( ".cpp" ) && !reaches( tree, path, header ) )
         findings.push_back( fmt::format( "{} does not include {}", path, header ) );
   return findings;
}

Findings forgottenTests( const SourceTree &tree ) {
   Findings findings;
   for ( const auto &[path, file] : tree.files() ) {
      if ( roomOf( path ) != "tests" || !path.ends_with( "Test.cpp" ) )
         continue;
      const std::string folder = folderOf( path );
      if ( !usesTest( cmakeOf( tree, folder ), path.substr( folder.size() + 1 ) ) )
         findings.push_back(
            fmt::format( "{}: {}/CMakeLists.txt does not build it", path, folder ) );
      if ( !isReached( tree, folder ) )
         findings.push_back( fmt::format( "{}: no CMakeLists.txt above adds {}", path, folder ) );
   }
   return findings;
}

} // namespace House
