#include "support/ChangedBoard.h"

#include "boardfiles/Board.h"
#include "boardfiles/Json.h"

#include <gtest/gtest.h>
#include <rapidjson/pointer.h>

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
   folder_.write( file, Json::write( document ) );
}

std::vector<std::string> ChangedBoard::check() const {
   Findings findings;
   const auto board = loadBoard(
      folder_.path(), drivers_.is_absolute() ? drivers_ : folder_.path() / drivers_, findings );
   EXPECT_EQ( board.has_value(), findings.empty() );
   std::vector<std::string> texts;
   for ( const Finding &finding : findings )
      texts.push_back( toText( finding ) );
   return texts;
}
