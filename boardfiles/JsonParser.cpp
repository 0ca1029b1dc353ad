// RapidJSON's events made into values that know their place.
#include "boardfiles/Json.h"

#include <fmt/format.h>
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

namespace BoardFiles {

namespace {

constexpr size_t maxNesting = 64;
constexpr unsigned parseFlags = rapidjson::kParseIterativeFlag |
                                rapidjson::kParseValidateEncodingFlag |
                                rapidjson::kParseNumbersAsStringsFlag;

std::string escaped( std::string_view key ) { // RFC 6901
   std::string text;
   for ( const char letter : key )
      text += letter == '~' ? "~0" : letter == '/' ? "~1" : std::string( 1, letter );
   return text;
}

// For each byte of a string's value, and for its end, where it is in the literal that starts with
// the quote at `at`.
std::vector<size_t> literalOffsets( const std::string &text, size_t at ) {
   std::vector<size_t> offsets;
   for ( ++at; text[at] != '"'; ) {
      if ( text[at] != '\\' ) {
         offsets.push_back( at++ );
         continue;
      }
      size_t length = 2;
      size_t bytes = 1;
      if ( text[at + 1] == 'u' ) {
         const auto unit = std::stoul( text.substr( at + 2, 4 ), nullptr, 16 );
         const bool isPair = unit >= 0xD800 && unit < 0xDC00;
         length = isPair ? 12 : 6;
         bytes = isPair ? 4 : unit < 0x80 ? 1 : unit < 0x800 ? 2 : 3; // in UTF-8
      }
      offsets.insert( offsets.end(), bytes, at );
      at += length;
   }
   offsets.push_back( at );
   return offsets;
}

} // namespace

// Makes values of a text's events, and knows where each begins and ends.
class JsonBuilder : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, JsonBuilder> {
 public:
   // Offsets of the text in the source, byte by byte; none: the text is the source.
   JsonBuilder( std::shared_ptr<const Source> source, std::string_view text, std::string pointer,
                std::vector<size_t> offsets, Findings &findings )
      : source_( std::move( source ) ), text_( text ), offsets_( std::move( offsets ) ),
        findings_( findings ) {
      root_.pointer_ = std::move( pointer );
   }

   // For the text that a value holds.
   static JsonBuilder inside( const Json &text, Findings &findings ) {
      return { text.source_, text.text_, text.pointer_,
               literalOffsets( text.source_->text(), text.begin_ ), findings };
   }

   std::optional<Json> build() {
      if ( const size_t nul = text_.find( '\0' ); nul != text_.npos )
         return fail( nul, "a NUL byte" );
      if ( text_.starts_with( "\xEF\xBB\xBF" ) )
         return fail( 0, "the file starts with a byte-order mark; save it as UTF-8 without one" );
      rapidjson::Reader reader;
      rapidjson::MemoryStream stream( text_.data(), text_.size() );
      stream_ = &stream;
      if ( const auto result = reader.Parse<parseFlags>( stream, *this ); !result )
         return fail( result.Offset(),
                      result.Code() == rapidjson::kParseErrorTermination
                         ? fmt::format( "nested deeper than {} levels", maxNesting )
                         : explain( result.Code(), result.Offset() ) );
      return std::move( root_ );
   }

   // The reader's side.
   bool Null() {
      add( Json::Type::Null );
      return true;
   }
   bool Bool( bool truth ) {
      add( Json::Type::Bool ).truth_ = truth;
      return true;
   }
   bool RawNumber( const char *digits, rapidjson::SizeType length, bool ) {
      const std::string text( digits, length );
      Json &json = add( Json::Type::Number );
      json.number_ = std::strtod( text.c_str(), nullptr );
      json.integer_ = text.find_first_of( ".eE" ) == text.npos;
      return true;
   }
   bool String( const char *text, rapidjson::SizeType length, bool ) {
      Json &json = add( Json::Type::Text );
      json.text_.assign( text, length );
      if ( std::memchr( text, 0, length ) )
         report( findings_, json.place(), "a NUL byte inside a text" );
      return true;
   }
   bool Key( const char *text, rapidjson::SizeType length, bool ) {
      Json &object = *open_.back();
      const std::string key( text, length );
      const size_t begin = nextBegin();
      Json::Member member{ key, {}, source_->place( inSource( begin ) ) };
      member.value.pointer_ = object.pointer_ + "/" + escaped( key );
      member.place.pointer = member.value.pointer_;
      if ( object.find( key ) )
         report( findings_, member.place, fmt::format( "\"{}\" is twice in one object", key ) );
      if ( std::memchr( text, 0, length ) )
         report( findings_, member.place, "a NUL byte inside a text" );
      object.members_.push_back( std::move( member ) );
      last_ = stream_->Tell();
      return true;
   }
   bool StartObject() { return start( Json::Type::Object ); }
   bool StartArray() { return start( Json::Type::List ); }
   bool EndObject( rapidjson::SizeType ) { return end(); }
   bool EndArray( rapidjson::SizeType ) { return end(); }

 private:
   size_t inSource( size_t offset ) const {
      return offsets_.empty() ? offset : offsets_[std::min( offset, offsets_.size() - 1 )];
   }
   // A value begins behind the last one, white space and separators.
   size_t nextBegin() const {
      return std::min( text_.find_first_not_of( " \t\r\n,:", last_ ), text_.size() );
   }

   Json &add( Json::Type type ) {
      Json *json = &root_;
      if ( !open_.empty() ) {
         Json &parent = *open_.back();
         if ( parent.type_ == Json::Type::List ) {
            json = &parent.elements_.emplace_back();
            json->pointer_ = fmt::format( "{}/{}", parent.pointer_, parent.elements_.size() - 1 );
         } else {
            json = &parent.members_.back().value;
         }
      }
      json->type_ = type;
      json->source_ = source_;
      json->begin_ = inSource( nextBegin() );
      json->end_ = inSource( stream_->Tell() );
      last_ = stream_->Tell();
      return *json;
   }
   bool start( Json::Type type ) {
      // Values stay where they are while they are open: a parent grows only when none of its
      // elements is.
      open_.push_back( &add( type ) );
      ++last_; // the bracket is still to be read
      return open_.size() <= maxNesting;
   }
   bool end() {
      last_ = stream_->Tell() + 1;
      open_.back()->end_ = inSource( last_ );
      open_.pop_back();
      return true;
   }

   std::nullopt_t fail( size_t offset, std::string reason ) {
      Place place = source_->place( inSource( std::min( offset, text_.size() ) ) );
      place.pointer = root_.pointer_;
      report( findings_, place, std::move( reason ) );
      return std::nullopt;
   }

   // The usual slips get words of their own.
   std::string explain( rapidjson::ParseErrorCode code, size_t offset ) const {
      const std::string_view rest = text_.substr( std::min( offset, text_.size() ) );
      const size_t before = text_.find_last_not_of( " \t\r\n", offset == 0 ? 0 : offset - 1 );
      if ( rest.starts_with( "//" ) || rest.starts_with( "/*" ) || rest.starts_with( "#" ) )
         return "a comment; JSON has none";
      if ( rest.starts_with( "'" ) )
         return "a single quote; JSON has texts in double quotes";
      if ( ( rest.starts_with( "}" ) || rest.starts_with( "]" ) ) && offset > 0 &&
           before != text_.npos && text_[before] == ',' )
         return fmt::format( "a comma before the closing {}", rest[0] );
      return rapidjson::GetParseError_En( code );
   }

   std::shared_ptr<const Source> source_;
   std::string_view text_;
   const std::vector<size_t> offsets_;
   Findings &findings_;
   Json root_;
   std::vector<Json *> open_{};
   const rapidjson::MemoryStream *stream_ = nullptr;
   size_t last_ = 0; // the end of the last value or key
};

std::optional<Json> readJson( const std::filesystem::path &path, Findings &findings ) {
   const Place whole{ path.string() };
   std::error_code failure;
   const auto status = std::filesystem::status( path, failure );
   if ( status.type() == std::filesystem::file_type::not_found ) {
      report( findings, whole, "no such file" );
      return {};
   }
   if ( status.type() != std::filesystem::file_type::regular ) {
      report( findings, whole, failure ? failure.message() : "not a file" );
      return {};
   }
   std::ifstream stream( path, std::ios::binary );
   std::string text{ std::istreambuf_iterator<char>( stream ), {} };
   if ( !stream ) {
      report( findings, whole, fmt::format( "can't be read: {}", std::strerror( errno ) ) );
      return {};
   }
   return parseJson( std::move( text ), path.string(), findings );
}

std::optional<Json> parseJson( std::string text, const std::string &name, Findings &findings ) {
   const auto source = std::make_shared<const Source>( name, std::move( text ) );
   return JsonBuilder( source, source->text(), "", {}, findings ).build();
}

std::optional<Json> parseInside( const Json &text, Findings &findings ) {
   return JsonBuilder::inside( text, findings ).build();
}

} // namespace BoardFiles
