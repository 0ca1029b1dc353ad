#include "support/ChangedBoard.h"

#include "boardfiles/Board.h"

#include <gtest/gtest.h>
#include <rapidjson/pointer.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

using namespace BoardFiles;

ChangedBoard::ChangedBoard( const std::filesystem::path &board, std::filesystem::path drivers )
   : drivers_( std::move( drivers ) ) {
   std::filesystem::copy( board, folder_.path(), std::filesystem::copy_options::recursive );
}

void ChangedBoard::change( const std::string &file, const std::string &pointer,
                           const std::string &json ) const {
   rapidjson::Document document;
   document.Parse( folder_.read( file ).c_str() );
   const rapidjson::Pointer place( pointer.c_str() );
   rapidjson::Document value( &document.GetAllocator() );
   value.Parse( json.c_str() );
   if ( json.empty() )
      ASSERT_TRUE( place.Erase( document ) ) << pointer;
   else
      place.Set( document, value );
   rapidjson::StringBuffer buffer;
   rapidjson::Writer<rapidjson::StringBuffer> writer( buffer );
   document.Accept( writer );
   folder_.write( file, buffer.GetString() );
}

std::vector<std::string> ChangedBoard::check() const {
   Findings findings;
   const auto board = loadBoard(
      folder_.path(), drivers_.has_parent_path() ? drivers_ : folder_.path() / drivers_, findings );
   EXPECT_EQ( board.has_value(), !hasErrors( findings ) );
   return textsWithPointers( findings );
}

std::string textWithPointer( const Finding &finding ) {
   std::string text = finding.place.file;
   if ( finding.place.pointer.empty() && finding.place.line * finding.place.column > 1 )
      text = toText( finding.place ); // where it doesn't parse
   else if ( !finding.place.pointer.empty() )
      text += ":" + finding.place.pointer;
   if ( finding.isWarning() )
      text += ": warning";
   if ( !finding.object.empty() )
      text += ": " + finding.object;
   return text + ": " + finding.reason;
}

std::vector<std::string> textsWithPointers( const Findings &findings ) {
   std::vector<std::string> texts;
   for ( const Finding &finding : findings )
      texts.push_back( textWithPointer( finding ) );
   return texts;
}
