#include "boardfiles/JsonFile.h"

#include <fmt/format.h>
#include <rapidjson/error/en.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

namespace BoardFiles {

BoardError BoardError::at( const std::string &file, const std::string &pointer,
                           const std::string &reason ) {
   return BoardError( fmt::format( "{}: {}: {}", file, pointer.empty() ? "/" : pointer, reason ) );
}

namespace {

std::string readText( const std::string &path ) {
   std::ifstream stream( path );
   std::string text{ std::istreambuf_iterator<char>( stream ), {} };
   if ( !stream )
      throw BoardError( fmt::format( "{}: can't be read: {}", path, std::strerror( errno ) ) );
   return text;
}

} // namespace

JsonFile readJsonFile( const std::string &path ) {
   const std::string text = readText( path );
   JsonFile file{ path, {} };
   file.document.Parse( text.c_str(), text.size() );
   if ( file.document.HasParseError() ) {
      const auto before = std::string_view( text ).substr( 0, file.document.GetErrorOffset() );
      const auto line = 1 + std::count( before.begin(), before.end(), '\n' );
      const size_t lastBreak = before.rfind( '\n' );
      const size_t column = before.size() - ( lastBreak == before.npos ? 0 : lastBreak + 1 ) + 1;
      throw BoardError( fmt::format( "{}:{}:{}: {}", path, line, column,
                                     GetParseError_En( file.document.GetParseError() ) ) );
   }
   return file;
}

void JsonPlace::fail( const std::string &reason ) const {
   throw BoardError::at( file_->path, pointer_, reason );
}

std::optional<JsonPlace> JsonPlace::find( const char *key ) const {
   if ( !value_->IsObject() )
      fail( "is no object" );
   const auto found = value_->FindMember( key );
   if ( found == value_->MemberEnd() )
      return {};
   return JsonPlace( file_, found->value, pointer_ + "/" + key );
}

JsonPlace JsonPlace::member( const char *key ) const {
   const auto found = find( key );
   if ( !found )
      fail( fmt::format( "has no \"{}\"", key ) );
   return *found;
}

std::vector<JsonPlace> JsonPlace::elements() const {
   if ( !value_->IsArray() )
      fail( "is no array" );
   std::vector<JsonPlace> all;
   for ( const rapidjson::Value &element : value_->GetArray() )
      all.push_back( JsonPlace( file_, element, fmt::format( "{}/{}", pointer_, all.size() ) ) );
   return all;
}

std::vector<JsonPlace> JsonPlace::elementsOf( const char *key ) const {
   const auto array = find( key );
   return array ? array->elements() : std::vector<JsonPlace>();
}

uint32_t JsonPlace::number( uint32_t max ) const {
   if ( !value_->IsUint() || value_->GetUint() > max )
      fail( fmt::format( "is no whole number from 0 to {}", max ) );
   return value_->GetUint();
}

std::string JsonPlace::text() const {
   if ( !value_->IsString() )
      fail( "is no string" );
   return { value_->GetString(), value_->GetStringLength() };
}

bool JsonPlace::truth() const {
   if ( !value_->IsBool() )
      fail( "is neither true nor false" );
   return value_->GetBool();
}

} // namespace BoardFiles
