#include "boardfiles/Schema.h"

#include "boardfiles/Json.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <set>

namespace BoardFiles {
namespace {

// Checks a copy of a value again and again, each time without what was found wrong before: the
// validator itself ends at the first thing that doesn't fit.
class Pruner {
 public:
   Pruner( const rapidjson::Document &source, const rapidjson::SchemaDocument &compiled,
           const rapidjson::Value &value, const Place &root, Findings &findings )
      : source_( source ), compiled_( compiled ), root_( root ), findings_( findings ) {
      rest_.CopyFrom( value, rest_.GetAllocator() );
   }

   void run() {
      rapidjson::SchemaValidator validator( compiled_ );
      while ( !rest_.Accept( validator ) && prune( validator ) )
         validator.Reset();
   }

 private:
   // False when the whole value is what doesn't fit, so that nothing is left to look at.
   bool prune( const rapidjson::SchemaValidator &validator ) {
      const rapidjson::Pointer at = validator.GetInvalidDocumentPointer();
      const rapidjson::Value *value = at.Get( rest_ );
      const rapidjson::Value *rule = validator.GetInvalidSchemaPointer().Get( source_ );
      const std::string keyword = validator.GetInvalidSchemaKeyword();
      const Place place = original( at );
      if ( keyword == "required" )
         reportMissing( place, value, *Json::find( rule, "required" ) );
      else if ( keyword == "dependencies" )
         for ( const auto &[key, needs] : Json::members( Json::find( rule, "dependencies" ) ) ) {
            if ( Json::find( value, key.GetString() ) )
               reportMissing( place, value, needs );
         }
      else if ( keyword == "additionalProperties" )
         report( findings_, place, "is not a key that is known here" );
      else
         report( findings_, place,
                 fmt::format( "{} does not fit \"{}\": {}", shortText( *value ), keyword,
                              Json::write( *Json::find( rule, keyword.c_str() ) ) ) );
      return remove( at, place );
   }

   void reportMissing( const Place &place, const rapidjson::Value *value,
                       const rapidjson::Value &keys ) {
      for ( const rapidjson::Value &key : keys.GetArray() )
         if ( !Json::find( value, key.GetString() ) &&
              !removed_.contains( ( place / key.GetString() ).pointerText() ) )
            report( findings_, place, fmt::format( "\"{}\" is missing", key.GetString() ) );
   }

   bool remove( const rapidjson::Pointer &at, const Place &place ) {
      removed_.insert( place.pointerText() );
      return at.GetTokenCount() && at.Erase( rest_ );
   }

   // The place that a pointer into the rest has in the value as it was given: array elements that
   // were removed count again.
   Place original( const rapidjson::Pointer &at ) const {
      Place place = root_;
      for ( size_t i = 0; i < at.GetTokenCount(); ++i ) {
         const auto &token = at.GetTokens()[i];
         const rapidjson::Pointer parent( at.GetTokens(), i );
         if ( !parent.Get( rest_ )->IsArray() ) {
            place = place / std::string_view( token.name, token.length );
            continue;
         }
         size_t index = 0;
         for ( size_t left = token.index;; ++index )
            if ( !removed_.contains( ( place / index ).pointerText() ) && left-- == 0 )
               break;
         place = place / index;
      }
      return place;
   }

   static std::string shortText( const rapidjson::Value &value ) {
      if ( value.IsObject() )
         return "an object";
      if ( value.IsArray() )
         return "a list";
      return Json::write( value );
   }

   const rapidjson::Document &source_;
   const rapidjson::SchemaDocument &compiled_;
   const Place &root_;
   Findings &findings_;
   rapidjson::Document rest_;
   std::set<std::string> removed_; // by their original places
};

} // namespace

Schema::Schema( std::string_view text, const std::string &definition ) {
   rapidjson::Document whole;
   whole.Parse( text.data(), text.size() );
   auto &allocator = source_.GetAllocator();
   rapidjson::Value &definitions = whole["definitions"];
   source_.CopyFrom( definitions[definition.c_str()], allocator );
   source_.AddMember( "definitions", rapidjson::Value( definitions, allocator ), allocator );
   compiled_ = std::make_unique<rapidjson::SchemaDocument>( source_ );
}

void Schema::check( const rapidjson::Value &value, const Place &place, Findings &findings ) const {
   Pruner( source_, *compiled_, value, place, findings ).run();
}

ListSchema::ListSchema( std::string_view text ) : element_( text, "element" ) {
   rapidjson::Document whole;
   whole.Parse( text.data(), text.size() );
   const rapidjson::Value &types = whole["definitions"]["element"]["properties"]["type"]["enum"];
   for ( const rapidjson::Value &type : types.GetArray() )
      byType_.emplace( type.GetString(), Schema( text, type.GetString() ) );
}

void ListSchema::check( const rapidjson::Value &list, const Place &place,
                        Findings &findings ) const {
   if ( !list.IsArray() ) {
      report( findings, place, "must be a list" );
      return;
   }
   for ( rapidjson::SizeType i = 0; i < list.Size(); ++i ) {
      const auto type = Json::toText( Json::find( &list[i], "type" ) );
      const auto known = type ? byType_.find( *type ) : byType_.end();
      Place at = place / i;
      at.object = Json::toText( Json::find( &list[i], "name" ) ).value_or( "" );
      ( known == byType_.end() ? element_ : known->second ).check( list[i], at, findings );
   }
}

} // namespace BoardFiles
