#include "boardfiles/Json.h"

#include <algorithm>
#include <cstring>
#include <fmt/format.h>
#include <fstream>
#include <iterator>
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <set>

namespace BoardFiles::Json {
namespace {

constexpr size_t deepestNesting = 64;
constexpr unsigned parseFlags =
   rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag;

// Goes through a text once and keeps book of where it is.
class Proofreader : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Proofreader> {
 public:
   Proofreader( const Place &root, Findings &findings ) : root_( root ), findings_( findings ) {}

   bool Default() { return nextElement(); }
   bool String( const char *text, rapidjson::SizeType length, bool ) {
      nextElement();
      refuseNul( text, length );
      return true;
   }
   bool Key( const char *text, rapidjson::SizeType length, bool ) {
      Level &level = levels_.back();
      level.key.assign( text, length );
      if ( !level.keys.insert( level.key ).second )
         report( findings_, here(), fmt::format( "\"{}\" stands twice in one object", level.key ) );
      refuseNul( text, length );
      return true;
   }
   bool StartObject() { return open( false ); }
   bool EndObject( rapidjson::SizeType ) { return close(); }
   bool StartArray() { return open( true ); }
   bool EndArray( rapidjson::SizeType ) { return close(); }

 private:
   struct Level {
      bool isArray = false;
      size_t count = 0; // elements so far
      std::string key{};
      std::set<std::string> keys{};
   };

   bool nextElement() {
      if ( !levels_.empty() && levels_.back().isArray )
         ++levels_.back().count;
      return true;
   }
   bool open( bool isArray ) {
      nextElement();
      levels_.push_back( { .isArray = isArray } );
      return levels_.size() <= deepestNesting;
   }
   bool close() {
      levels_.pop_back();
      return true;
   }
   void refuseNul( const char *text, rapidjson::SizeType length ) {
      if ( std::memchr( text, 0, length ) )
         report( findings_, here(), "a NUL byte inside a text" );
   }
   Place here() const {
      Place place = root_;
      for ( const Level &level : levels_ )
         place = level.isArray ? place / ( level.count - 1 ) : place / level.key;
      return place;
   }

   const Place &root_;
   Findings &findings_;
   std::vector<Level> levels_;
};

// "LINE:COLUMN" of an offset, below the place where the text stands.
void reportAt( const Place &at, const std::string &text, size_t offset, std::string reason,
               Findings &findings ) {
   const auto end = text.begin() + static_cast<ptrdiff_t>( std::min( offset, text.size() ) );
   const auto line = 1 + std::count( text.begin(), end, '\n' );
   const auto lineStart = std::find( std::make_reverse_iterator( end ), text.rend(), '\n' ).base();
   const std::string pointer = at.pointerText();
   findings.push_back(
      { at.file,
        fmt::format( "{}{}{}:{}", pointer, pointer.empty() ? "" : ":", line, end - lineStart + 1 ),
        at.object, std::move( reason ) } );
}

} // namespace

std::optional<File> load( const std::filesystem::path &path, Findings &findings ) {
   File file{ { path.string() }, {}, {} };
   std::error_code failure;
   if ( !std::filesystem::is_regular_file( path, failure ) ) {
      report( findings, file.root, failure ? failure.message() : "is not a file" );
      return {};
   }
   std::ifstream stream( path, std::ios::binary );
   file.text.assign( std::istreambuf_iterator<char>( stream ), {} );
   if ( !stream ) {
      report( findings, file.root, "can't be read" );
      return {};
   }
   auto document = parse( file.text, file.root, findings );
   if ( !document )
      return {};
   file.document = std::move( *document );
   return file;
}

std::optional<rapidjson::Document> parse( const std::string &text, const Place &at,
                                          Findings &findings ) {
   if ( const auto nul = text.find( '\0' ); nul != std::string::npos ) {
      reportAt( at, text, nul, "a NUL byte", findings );
      return {};
   }
   Proofreader proofreader( at, findings );
   rapidjson::Reader reader;
   rapidjson::MemoryStream stream( text.data(), text.size() );
   if ( const auto result = reader.Parse<parseFlags>( stream, proofreader ); !result ) {
      reportAt( at, text, result.Offset(),
                result.Code() == rapidjson::kParseErrorTermination
                   ? fmt::format( "nested deeper than {} levels", deepestNesting )
                   : rapidjson::GetParseError_En( result.Code() ),
                findings );
      return {};
   }
   rapidjson::Document document;
   document.Parse<parseFlags>( text.data(), text.size() );
   return document;
}

const rapidjson::Value *find( const rapidjson::Value *value, const char *key ) {
   if ( !value || !value->IsObject() )
      return nullptr;
   const auto member = value->FindMember( key );
   return member == value->MemberEnd() ? nullptr : &member->value;
}

std::optional<uint32_t> toUnsigned( const rapidjson::Value *value ) {
   return value && value->IsUint() ? std::optional( value->GetUint() ) : std::nullopt;
}

std::optional<std::string_view> toText( const rapidjson::Value *value ) {
   if ( !value || !value->IsString() )
      return {};
   return std::string_view( value->GetString(), value->GetStringLength() );
}

bool isTrue( const rapidjson::Value *value ) { return value && value->IsTrue(); }

std::string textOf( const rapidjson::Value &object, const char *key ) {
   return std::string( toText( find( &object, key ) ).value_or( "" ) );
}

rapidjson::Value::ConstArray elements( const rapidjson::Value *value ) {
   static const rapidjson::Value none( rapidjson::kArrayType );
   return ( value && value->IsArray() ? *value : none ).GetArray();
}

rapidjson::Value::ConstObject members( const rapidjson::Value *value ) {
   static const rapidjson::Value none( rapidjson::kObjectType );
   return ( value && value->IsObject() ? *value : none ).GetObject();
}

std::string write( const rapidjson::Value &value ) {
   rapidjson::StringBuffer buffer;
   rapidjson::Writer<rapidjson::StringBuffer> writer( buffer );
   value.Accept( writer );
   return { buffer.GetString(), buffer.GetSize() };
}

} // namespace BoardFiles::Json
