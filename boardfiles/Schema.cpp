#include "boardfiles/Schema.h"

#include "boardfiles/Nearest.h"
#include "boardfiles/Pattern.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

namespace BoardFiles {

namespace {

std::string quoted( const std::vector<std::string> &names ) {
   return fmt::format( "\"{}\"", fmt::join( names, "\", \"" ) );
}

// A value in a message: what it is, or how the file has it.
std::string shown( const Json &value ) {
   if ( value.type() == Json::Type::Object )
      return "an object";
   if ( value.type() == Json::Type::List )
      return "a list";
   return std::string( value.source() );
}

struct TypeName {
   std::string_view schemas;
   const char *words;
};
constexpr TypeName typeNames[] = {
   { "object", "an object" }, { "array", "a list" },           { "string", "a text" },
   { "number", "a number" },  { "integer", "a whole number" }, { "boolean", "true or false" }
};

bool isOfType( const Json &value, std::string_view type ) {
   switch ( value.type() ) {
   case Json::Type::Object:
      return type == "object";
   case Json::Type::List:
      return type == "array";
   case Json::Type::Text:
      return type == "string";
   case Json::Type::Number:
      return type == "number" || ( type == "integer" && value.isInteger() );
   case Json::Type::Bool:
      return type == "boolean";
   case Json::Type::Null:
      break;
   }
   return false;
}

std::vector<std::string> keysOf( const Json *object ) {
   std::vector<std::string> keys;
   if ( object ) {
      for ( const Json::Member &member : object->members() )
         keys.push_back( member.key );
   }
   return keys;
}

class Checker {
 public:
   Checker( const Json &schema, Findings &findings ) : schema_( schema ), findings_( findings ) {}

   void check( const Json &value, const Json &rules ) {
      const Json &rule = resolved( rules );
      if ( !checkType( value, rule ) )
         return;
      checkScalar( value, rule );
      if ( value.type() == Json::Type::Object )
         checkObject( value, rule );
      if ( value.type() == Json::Type::List )
         checkList( value, rule );
      checkBranches( value, rule );
   }

 private:
   const Json &resolved( const Json &rule ) const {
      const auto reference = rule.textOf( "$ref" );
      if ( !reference )
         return rule;
      constexpr std::string_view before = "#/definitions/";
      return resolved( *schema_.find( "definitions" )->find( reference->substr( before.size() ) ) );
   }

   bool checkType( const Json &value, const Json &rule ) {
      const auto type = rule.textOf( "type" );
      if ( !type || isOfType( value, *type ) )
         return true;
      const auto *name =
         std::find_if( std::begin( typeNames ), std::end( typeNames ),
                       [&]( const TypeName &each ) { return each.schemas == *type; } );
      report( findings_, value.place(),
              fmt::format( "{} is not {}", shown( value ), name->words ) );
      return false;
   }

   void checkScalar( const Json &value, const Json &rule ) {
      const auto complain = [&]( const std::string &reason ) {
         report( findings_, value.place(), reason );
      };
      if ( const Json *allowed = rule.find( "enum" ) )
         checkEnum( value, *allowed );
      const auto number = value.toNumber();
      const Json *minimum = rule.find( "minimum" );
      const Json *maximum = rule.find( "maximum" );
      if ( number && minimum && *number < *minimum->toNumber() )
         complain( fmt::format( "{} is below {}", shown( value ), minimum->source() ) );
      if ( number && maximum && *number > *maximum->toNumber() )
         complain( fmt::format( "{} is above {}", shown( value ), maximum->source() ) );
      const auto text = value.toText();
      const auto pattern = rule.textOf( "pattern" );
      if ( text && pattern && !matches( *text, *pattern ) )
         complain( fmt::format( "{} does not have the form {}", shown( value ), *pattern ) );
      if ( text && text->empty() && rule.unsignedOf( "minLength" ).value_or( 0 ) > 0 )
         complain( "an empty text" );
      const auto longest = rule.unsignedOf( "maxLength" );
      if ( text && longest && text->size() > *longest )
         complain( fmt::format( "{} has more than {} bytes", shown( value ), *longest ) );
   }

   void checkEnum( const Json &value, const Json &allowed ) {
      std::vector<std::string> names;
      for ( const Json &each : allowed.elements() ) {
         if ( each.source() == value.source() )
            return;
         names.emplace_back( each.toText().value_or( each.source() ) );
      }
      const std::string near =
         value.toText() ? didYouMean( *value.toText(), names ) : std::string();
      const std::string known = allowed.elements().front().toText()
                                   ? quoted( names )
                                   : fmt::format( "{}", fmt::join( names, ", " ) );
      report( findings_, value.place(),
              names.size() == 1
                 ? fmt::format( "{} is not {}", shown( value ), known )
                 : fmt::format( "{} is none of {}{}", shown( value ), known, near ) );
   }

   void checkObject( const Json &object, const Json &rule ) {
      for ( const Json &key : rule.elementsOf( "required" ) )
         require( object, *key.toText() );
      if ( const Json *dependencies = rule.find( "dependencies" ) ) {
         for ( const Json::Member &dependency : dependencies->members() ) {
            if ( object.find( dependency.key ) ) {
               for ( const Json &key : dependency.value.elements() )
                  require( object, *key.toText() );
            }
         }
      }
      const Json *properties = rule.find( "properties" );
      const Json *additional = rule.find( "additionalProperties" );
      for ( const Json::Member &member : object.members() ) {
         const Json *known = properties ? properties->find( member.key ) : nullptr;
         if ( known )
            check( member.value, *known );
         else if ( additional && additional->type() == Json::Type::Object )
            check( member.value, *additional );
         else if ( additional )
            report( findings_, member.place, unknownKey( member.key, properties ) );
         else if ( properties )
            warn( findings_, member.place,
                  unknownKey( member.key, properties ) + "; it is ignored" );
      }
   }

   static std::string unknownKey( const std::string &key, const Json *properties ) {
      return fmt::format( "unknown key \"{}\"{}", key, didYouMean( key, keysOf( properties ) ) );
   }

   void require( const Json &object, std::string_view key ) {
      if ( !object.find( key ) )
         report( findings_, object.place(), fmt::format( "\"{}\" is missing", key ) );
   }

   void checkList( const Json &list, const Json &rule ) {
      const size_t size = list.elements().size();
      const auto least = rule.unsignedOf( "minItems" );
      const auto most = rule.unsignedOf( "maxItems" );
      if ( least && size < *least )
         report( findings_, list.place(),
                 size == 0 ? "an empty list" : fmt::format( "fewer than {} elements", *least ) );
      if ( most && size > *most )
         report( findings_, list.place(), fmt::format( "more than {} elements", *most ) );
      if ( const Json *items = rule.find( "items" ) ) {
         for ( const Json &element : list.elements() )
            check( element, *items );
      }
   }

   void checkBranches( const Json &value, const Json &rule ) {
      std::span<const Json> branches = rule.elementsOf( "oneOf" );
      if ( branches.empty() )
         branches = rule.elementsOf( "anyOf" );
      if ( branches.empty() )
         return;
      if ( const std::string key = tellingKey( resolved( branches.front() ) ); !key.empty() )
         checkBranchNamedBy( key, value, branches );
      else
         checkKeyChoice( value, branches );
   }

   // The property of a branch that may only have certain texts.
   std::string tellingKey( const Json &branch ) const {
      if ( const Json *properties = branch.find( "properties" ) ) {
         for ( const Json::Member &property : properties->members() ) {
            const auto texts = resolved( property.value ).elementsOf( "enum" );
            if ( !texts.empty() && texts.front().toText() )
               return property.key;
         }
      }
      return {};
   }

   void checkBranchNamedBy( const std::string &key, const Json &value,
                            std::span<const Json> branches ) {
      if ( value.type() != Json::Type::Object ) {
         report( findings_, value.place(), fmt::format( "{} is not an object", shown( value ) ) );
         return;
      }
      const Json *named = value.find( key );
      if ( !named ) {
         report( findings_, value.place(), fmt::format( "\"{}\" is missing", key ) );
         return;
      }
      std::vector<std::string> known;
      for ( const Json &each : branches ) {
         const Json &branch = resolved( each );
         const Json &texts = resolved( *branch.find( "properties" )->find( key ) );
         for ( const Json &text : texts.elementsOf( "enum" ) ) {
            if ( text.toText() == named->toText() )
               return check( value, branch );
            known.emplace_back( *text.toText() );
         }
      }
      report( findings_, named->place(),
              fmt::format( "{} is none of {}{}", shown( *named ), quoted( known ),
                           didYouMean( named->toText().value_or( "" ), known ) ) );
   }

   // Branches that only require a key each.
   void checkKeyChoice( const Json &value, std::span<const Json> branches ) {
      std::vector<std::string> keys;
      size_t found = 0;
      for ( const Json &branch : branches ) {
         keys.emplace_back( *branch.elementsOf( "required" ).front().toText() );
         found += value.find( keys.back() ) != nullptr;
      }
      if ( found != 1 )
         report( findings_, value.place(),
                 fmt::format( "needs exactly one of {}, has {}", quoted( keys ),
                              found == 0 ? "none" : "several" ) );
   }

   const Json &schema_;
   Findings &findings_;
};

} // namespace

Schema::Schema( std::string_view text ) {
   Findings findings;
   auto json = parseJson( std::string( text ), "schema", findings );
   if ( !json )
      throw std::logic_error( toText( findings.front() ) );
   root_ = std::move( *json );
}

void Schema::check( const Json &value, Findings &findings ) const {
   Checker( root_, findings ).check( value, root_ );
}

void Schema::check( const Json &value, std::string_view definition, Findings &findings ) const {
   Checker( root_, findings ).check( value, *root_.find( "definitions" )->find( definition ) );
}

} // namespace BoardFiles
