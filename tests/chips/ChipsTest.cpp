// What belongs to a chip stands in several files. These tests read the files and say what is
// missing for a chip. docs/new-chip.md leads through all of them.
#include <gtest/gtest.h>

#include <rapidjson/document.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>

namespace {

namespace fs = std::filesystem;

using Names = std::set<std::string>;
using HeaderOf = std::map<std::string, std::string>; // header by what it declares

const char *const driverTable = "OrbisGeneric/Drivers/Kelt/KeltTables.cpp";
const char *const driversJson = "boards/libOrbisDriversKelt.drivers.json";
const char *const boardFilesDocument = "docs/board-files.md";
const char *const argumentsTitle = "### What Kelt's drivers take";
const char *const chipKinds = "simulator/board/ChipKinds.cpp";
const char *const includes = R"re(#include "([^"]+)")re";
const char *const newChipDocument = "docs/new-chip.md";

// Paths are below the project's root.
std::string textOf( const fs::path &path ) {
   std::ifstream stream( fs::path( SOURCE_ROOT ) / path );
   EXPECT_TRUE( stream ) << path << " can't be read";
   return { std::istreambuf_iterator<char>( stream ), {} };
}

Names filesBelow( const char *folder, const char *ending ) {
   Names files;
   const fs::path root( SOURCE_ROOT );
   for ( const auto &entry : fs::recursive_directory_iterator( root / folder ) ) {
      if ( entry.path().string().ends_with( ending ) )
         files.insert( fs::relative( entry.path(), root ).string() );
   }
   EXPECT_FALSE( files.empty() ) << "no *" << ending << " in " << folder;
   return files;
}

// What the group of the pattern matches, all over the text.
Names allMatches( const std::string &text, const char *pattern ) {
   Names found;
   const std::regex expression( pattern );
   for ( std::sregex_iterator at( text.begin(), text.end(), expression ), end; at != end; ++at )
      found.insert( at->str( 1 ) );
   return found;
}

// The text from `begin` up to `end`, or up to its own end.
std::string part( const std::string &text, const std::string &begin, const std::string &end ) {
   const size_t from = text.find( begin );
   EXPECT_NE( from, text.npos ) << "no \"" << begin << '"';
   return from == text.npos ? "" : text.substr( from, text.find( end, from + 1 ) - from );
}

// The driver classes: those with a factory.
HeaderOf driverClasses() {
   HeaderOf found;
   const std::regex classOrFactory( R"(\nclass (\w+)|\bcreate\(\s*const DriverArgs)" );
   for ( const std::string &header : filesBelow( "OrbisGeneric/Drivers", ".h" ) ) {
      const std::string text = textOf( header );
      std::string name;
      for ( std::sregex_iterator at( text.begin(), text.end(), classOrFactory ), end; at != end;
            ++at ) {
         if ( ( *at )[1].matched )
            name = at->str( 1 );
         else
            found[name] = header;
      }
   }
   EXPECT_FALSE( found.empty() );
   return found;
}

std::string driverRows() { return part( textOf( driverTable ), "drivers = {", "};" ); }

Names driverNames() {
   const Names names = allMatches( driverRows(), R"re(\{\s*"(\w+)")re" );
   EXPECT_FALSE( names.empty() ) << "no driver in " << driverTable;
   return names;
}

// The functions that describe simulated chips.
HeaderOf kindFunctions() {
   HeaderOf found;
   for ( const std::string &header : filesBelow( "simulator/chips", ".h" ) ) {
      for ( const std::string &name : allMatches( textOf( header ), R"(ChipKind (\w+)\(\);)" ) )
         found[name] = header;
   }
   EXPECT_FALSE( found.empty() );
   return found;
}

Names headersIncludedIn( const char *folder ) {
   Names headers;
   for ( const std::string &file : filesBelow( folder, "Test.cpp" ) )
      headers.merge( allMatches( textOf( file ), includes ) );
   return headers;
}

TEST( ChipsTest, EveryDriverHasAFactory ) {
   HeaderOf derived;
   Names bases;
   for ( const std::string &header : filesBelow( "OrbisGeneric/Drivers", ".h" ) ) {
      const std::string text = textOf( header );
      for ( const std::string &name : allMatches( text, R"(\nclass (\w+)(?: final)? : public )" ) )
         derived[name] = header;
      bases.merge( allMatches( text, R"(: public (?:\w+::)*(\w+))" ) );
   }
   const HeaderOf drivers = driverClasses();
   for ( const auto &[name, header] : derived ) {
      EXPECT_TRUE( drivers.contains( name ) || bases.contains( name ) )
         << "Drivers::" << name << " (" << header
         << ") has no static create( const DriverArgs &, Ham::Ham * )";
   }
}

TEST( ChipsTest, EveryDriverHasItsRowInTheTable ) {
   const Names rows = allMatches( driverRows(), R"((\w+)::create\b)" );
   for ( const auto &[name, header] : driverClasses() )
      EXPECT_TRUE( rows.contains( name ) )
         << "Drivers::" << name << " (" << header << ") has no row in " << driverTable;
}

TEST( ChipsTest, EveryDriverSaysWhatItWants ) {
   rapidjson::Document document;
   document.Parse<rapidjson::kParseFullPrecisionFlag>( textOf( driversJson ).c_str() );
   ASSERT_TRUE( document.IsObject() && document.HasMember( "drivers" ) ) << driversJson;
   Names described;
   const rapidjson::Value &drivers = document["drivers"];
   for ( unsigned i = 0; i < drivers.MemberCount(); ++i ) // clang warns of != of its iterators
      described.insert( ( drivers.MemberBegin() + static_cast<int>( i ) )->name.GetString() );
   const Names names = driverNames();
   for ( const std::string &name : names )
      EXPECT_TRUE( described.contains( name ) )
         << "driver " << name << " of " << driverTable << " has no entry in " << driversJson;
   for ( const std::string &name : described )
      EXPECT_TRUE( names.contains( name ) )
         << "driver " << name << " of " << driversJson << " has no row in " << driverTable;
}

TEST( ChipsTest, EveryDriverHasItsRowInTheDocument ) {
   const Names rows =
      allMatches( part( textOf( boardFilesDocument ), argumentsTitle, "\n#" ), "\n\\| `(\\w+)`" );
   const Names names = driverNames();
   for ( const std::string &name : names )
      EXPECT_TRUE( rows.contains( name ) )
         << "driver " << name << " has no row in " << boardFilesDocument << ", \""
         << argumentsTitle + 4 << " …\"";
   for ( const std::string &name : rows )
      EXPECT_TRUE( names.contains( name ) )
         << boardFilesDocument << " has a row for " << name << ", which is no driver";
}

TEST( ChipsTest, EveryDriverHasATest ) {
   const Names included = headersIncludedIn( "tests/plugin" );
   for ( const auto &[name, header] : driverClasses() )
      EXPECT_TRUE( included.contains( header ) )
         << "Drivers::" << name << " has no test: no *Test.cpp in tests/plugin includes " << header;
}

TEST( ChipsTest, EverySimulatedChipHasAKind ) {
   Names described; // headers with a kind, and what they include
   for ( const auto &[name, header] : kindFunctions() ) {
      described.insert( header );
      described.merge( allMatches( textOf( header ), includes ) );
   }
   for ( const std::string &header : filesBelow( "simulator/chips", ".h" ) ) {
      const bool isChip = textOf( header ).find( " : public Chip {" ) != std::string::npos;
      EXPECT_TRUE( !isChip || described.contains( header ) )
         << "the simulated chip of " << header << " has no ChipKind xKind();";
   }
}

TEST( ChipsTest, EverySimulatedChipIsInTheList ) {
   const Names called = allMatches( textOf( chipKinds ), R"((\w+)\(\))" );
   for ( const auto &[name, header] : kindFunctions() )
      EXPECT_TRUE( called.contains( name ) ) << "the simulated chip of " << header << " is not in "
                                             << chipKinds << ": no " << name << "()";
}

TEST( ChipsTest, EverySimulatedChipHasATest ) {
   const Names included = headersIncludedIn( "tests/simulator" );
   for ( const auto &[name, header] : kindFunctions() )
      EXPECT_TRUE( included.contains( header ) )
         << "the simulated chip of " << header
         << " has no test: no *Test.cpp in tests/simulator includes it";
}

TEST( ChipsTest, TheGuideNamesTheFilesThatANewChipChanges ) {
   const std::string list = part( textOf( newChipDocument ), "Existing files", "New files" );
   const Names named = allMatches( list, R"(\n\|?\s*`([\w/.-]+)`)" );
   for ( const char *file : { driverTable, driversJson, boardFilesDocument, chipKinds } )
      EXPECT_TRUE( named.contains( file ) ) << newChipDocument << " doesn't name " << file;
   for ( const std::string &file : named )
      EXPECT_TRUE( fs::exists( fs::path( SOURCE_ROOT ) / file ) )
         << newChipDocument << " names " << file << ", which isn't there";
   EXPECT_LE( named.size(), 5u ) << "a new chip should not change so many files";
}

} // namespace
