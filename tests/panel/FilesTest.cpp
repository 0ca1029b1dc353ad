// The page's files as the program has them, and what a browser may not find in them.
#include "panel/Files.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <iterator>
#include <regex>
#include <set>

namespace Panel {
namespace {

using ::testing::IsEmpty;

std::string textOf( const std::filesystem::path &path ) {
   std::ifstream stream( path );
   return { std::istreambuf_iterator<char>( stream ), {} };
}

std::vector<std::string> matches( const File &file, const std::string &pattern ) {
   const std::string text( file.text );
   const std::regex regex( pattern );
   std::vector<std::string> found;
   for ( std::sregex_iterator one( text.begin(), text.end(), regex ), end; one != end; ++one )
      found.push_back( std::string( file.name ) + ": " + one->str( one->size() - 1 ) );
   return found;
}

TEST( FilesTest, TheProgramHasEveryFileOfTheRoomByteByByte ) {
   std::set<std::string> names;
   for ( const auto &entry : std::filesystem::directory_iterator( PANEL ) )
      if ( const std::string type = entry.path().extension();
           type == ".html" || type == ".css" || type == ".js" || type == ".svg" ) {
         names.insert( entry.path().filename() );
         const File *file = find( entry.path().filename().string() );
         ASSERT_NE( file, nullptr ) << entry.path();
         EXPECT_EQ( file->text, textOf( entry.path() ) ) << entry.path();
      }
   EXPECT_EQ( files().size(), names.size() );
   EXPECT_EQ( find( "CMakeLists.txt" ), nullptr );
   EXPECT_EQ( find( "" ), nullptr );
}

TEST( FilesTest, EachFileHasATagOfItsOwn ) {
   std::set<std::string> tags;
   for ( const File &file : files() ) {
      EXPECT_THAT( file.tag, ::testing::MatchesRegex( "\"[0-9a-f]{16}\"" ) );
      tags.insert( file.tag );
   }
   EXPECT_EQ( tags.size(), files().size() );
}

TEST( FilesTest, ABrowserIsToldWhatEachFileIs ) {
   EXPECT_EQ( find( "index.html" )->contentType, "text/html; charset=utf-8" );
   EXPECT_EQ( find( "main.js" )->contentType, "text/javascript; charset=utf-8" );
   EXPECT_EQ( find( "panel.css" )->contentType, "text/css; charset=utf-8" );
}

TEST( FilesTest, AllOfThePageIsSmall ) {
   size_t size = 0;
   for ( const File &file : files() )
      size += file.text.size();
   EXPECT_LT( size, 500'000u );
}

// src="panel/main.js"; import { x } from "./other.js"; import( "./other.js" ); url( "x.svg" ).
TEST( FilesTest, EveryFileThatAnotherOneNamesIsThere ) {
   for ( const File &file : files() ) {
      const bool isPage = file.name.ends_with( ".html" );
      const std::string name = R"re(((?:panel/|\./)?[\w.-]+\.(?:js|css|svg|html)))re";
      for ( const std::string &pattern :
            { R"re((?:src|href)\s*=\s*["'])re" + name,
              R"re((?:from|import)\s*\(?\s*["'`])re" + name, R"re(url\(\s*["']?)re" + name } )
         for ( std::string named : matches( file, pattern ) ) {
            named.erase( 0, file.name.size() + 2 );
            // The page is at the root, its files beside each other in a folder.
            EXPECT_EQ( named.starts_with( "panel/" ), isPage ) << file.name << ": " << named;
            EXPECT_NE( find( named.substr( named.rfind( '/' ) + 1 ) ), nullptr )
               << file.name << ": " << named;
         }
   }
}

// A board's page must work where no other machine can be reached, and tell none that it is looked
// at.
TEST( FilesTest, NoFileLeadsToAnotherHost ) {
   for ( const File &file : files() ) {
      EXPECT_THAT(
         matches( file, R"re((https?:(?!//www\.w3\.org/(?:2000/svg|1999/xhtml)["'`])))re" ),
         IsEmpty() );
      EXPECT_THAT( matches( file, R"re(((?:src|href)\s*=\s*["']//|url\(\s*["']?//|["'`]//\w))re" ),
                   IsEmpty() );
   }
}

// What the board says (a vendor's name, a fault) is text, never a part of the page.
TEST( FilesTest, NothingIsMadeOfTextThatCouldBeAPage ) {
   for ( const File &file : files() )
      EXPECT_THAT( matches( file,
                            R"re((\b(?:innerHTML|outerHTML|insertAdjacentHTML|DOMParser|srcdoc|)re"
                            R"re(setHTMLUnsafe|createContextualFragment)\b|\beval\s*\(|)re"
                            R"re(\bFunction\s*\(|document\.write|javascript:))re" ),
                   IsEmpty() );
}

// The page's policy allows neither.
TEST( FilesTest, ThePageHasNoScriptsOrStylesOfItsOwn ) {
   for ( const File &file : files() ) {
      if ( file.name.ends_with( ".html" ) || file.name.ends_with( ".svg" ) ) {
         EXPECT_THAT(
            matches( file,
                     R"re((<style|\sstyle\s*=|\son\w+\s*=\s*["']|<script(?![^>]*\ssrc=)))re" ),
            IsEmpty() );
      }
   }
}

} // namespace
} // namespace Panel
