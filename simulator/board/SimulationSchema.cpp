#include "simulator/board/ChipKinds.h"

#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include <cmath>

namespace Simulator {

namespace {

// What every chip has, and modules: everything that isn't a kind's own. DEFINITIONS and KINDS are
// where those go.
constexpr const char *frame = R"({
   "$schema": "http://json-schema.org/draft-04/schema#",
   "title": "The chips of a simulated board",
   "description": "What is at the places that topology.json describes, and what it shows. Made by packaging/renew-schema of the simulator's own descriptions.",
   "type": "object",
   "required": [ "chips" ],
   "additionalProperties": false,
   "properties": {
      "seed": {
         "description": "Decides how everything drifts; the same seed gives the same run.",
         "type": "integer", "minimum": 0, "maximum": 4294967295
      },
      "chips": {
         "type": "array",
         "items": { "anyOf": [] }
      },
      "busses": {
         "description": "What isn't the usual about root busses.",
         "type": "array",
         "items": {
            "type": "object",
            "required": [ "bus", "clock" ],
            "additionalProperties": false,
            "properties": {
               "bus": { "description": "As clients name it: i2c:0, scd(4):1:2, celestica:1:1.", "type": "string" },
               "clock": {
                  "description": "Of its wires, in Hz; other busses have 100000.",
                  "type": "integer", "minimum": 1000, "maximum": 5000000
               }
            }
         }
      },
      "modules": {
         "description": "What can be pulled and inserted as one.",
         "type": "array",
         "items": { "$ref": "#/definitions/module" }
      },
      "fibres": {
         "description": "What carries the light of a module to another one, lane by lane and both ways.",
         "type": "array",
         "items": {
            "type": "object",
            "required": [ "ends" ],
            "additionalProperties": false,
            "properties": {
               "ends": {
                  "description": "Names of two modules.",
                  "type": "array", "minItems": 2, "maxItems": 2, "items": { "type": "string" }
               },
               "loss": { "description": "In dB; 0 without it.", "type": "number", "minimum": 0, "maximum": 60 }
            }
         }
      }
   },
   "definitions": {
      "did": {
         "description": "Of the topology device that says where the chip is.",
         "type": "integer", "minimum": 0, "maximum": 4294967295
      },
      "name": { "description": "For people, in messages; unique.", "type": "string", "minLength": 1 },
      "present": { "description": "False: pulled, until it is put back.", "type": "boolean" },
      "module": {
         "type": "object",
         "required": [ "name" ],
         "additionalProperties": false,
         "properties": {
            "name": { "description": "What to pull and insert; unique.", "type": "string", "minLength": 1 },
            "present": { "description": "False: pulled, until it is inserted.", "type": "boolean" },
            "chips": { "description": "Names of the chips in it.", "type": "array", "items": { "type": "string" } },
            "cage": {
               "description": "The cage that it is plugged into: its lines go to the module, and show whether one is there.",
               "type": "object",
               "required": [ "chip", "name" ],
               "additionalProperties": false,
               "properties": {
                  "chip": { "description": "The name of the CPLD that has the cage's lines.", "type": "string" },
                  "name": { "description": "The cage's name there: qsfp1, sfp12.", "type": "string" }
               }
            },
            "sets": {
               "description": "What the rest of the board sees of it.",
               "type": "array",
               "items": {
                  "type": "object",
                  "required": [ "chip", "quantity", "in", "out" ],
                  "additionalProperties": false,
                  "properties": {
                     "chip": { "description": "The chip's name.", "type": "string" },
                     "quantity": { "description": "One of the chip's quantities that can be set.", "type": "string" },
                     "in": { "description": "Its value while the module is in its place.", "type": "number" },
                     "out": { "description": "Its value while it isn't.", "type": "number" }
                  }
               }
            }
         }
      }
   }
})";

// Builds JSON values in one document.
class SchemaWriter {
 public:
   SchemaWriter() { document_.Parse( frame ); }

   std::string write() {
      Value &branches = document_["properties"]["chips"]["items"]["anyOf"];
      for ( const ChipKind &kind : chipKinds() ) {
         Value branch( rapidjson::kObjectType );
         add( branch, "$ref", textValue( "#/definitions/" + kind.name ) );
         branches.PushBack( branch, allocator() );
         add( document_["definitions"], kind.name, definition( kind ) );
      }
      rapidjson::StringBuffer buffer;
      rapidjson::PrettyWriter<rapidjson::StringBuffer> writer( buffer );
      writer.SetIndent( ' ', 3 );
      document_.Accept( writer );
      return std::string( buffer.GetString(), buffer.GetSize() ) + "\n";
   }

 private:
   using Value = rapidjson::Value;

   rapidjson::Document::AllocatorType &allocator() { return document_.GetAllocator(); }
   Value textValue( const std::string &text ) { return Value( text.c_str(), allocator() ); }
   void add( Value &object, const std::string &key, Value value ) {
      object.AddMember( textValue( key ), value, allocator() );
   }
   // 0.1 as it is, whole numbers without a point.
   static Value numberValue( double number ) {
      if ( std::trunc( number ) == number )
         return Value( static_cast<int64_t>( number ) );
      return Value( number );
   }

   Value textValues( const std::vector<std::string> &texts ) {
      Value values( rapidjson::kArrayType );
      for ( const std::string &text : texts )
         values.PushBack( textValue( text ), allocator() );
      return values;
   }

   Value definition( const ChipKind &kind ) {
      Value properties( rapidjson::kObjectType );
      Value required( rapidjson::kArrayType );
      for ( const char *key : { "did", "name" } ) {
         add( properties, key, reference( key ) );
         required.PushBack( textValue( key ), allocator() );
      }
      Value chip( rapidjson::kObjectType );
      add( chip, "enum", textValues( { kind.name } ) );
      add( properties, "chip", std::move( chip ) );
      required.PushBack( textValue( "chip" ), allocator() );
      add( properties, "present", reference( "present" ) );
      addKeys( kind.settings, properties, required );
      Value made = objectValue( kind.description, std::move( properties ), std::move( required ) );
      if ( kind.isMultiplexer )
         add( made, "multiplexer", Value( true ) );
      if ( !kind.settable.empty() )
         add( made, "settable", textValues( kind.settable ) );
      return made;
   }

   Value reference( const std::string &definition ) {
      Value made( rapidjson::kObjectType );
      add( made, "$ref", textValue( "#/definitions/" + definition ) );
      return made;
   }

   void addKeys( const std::vector<EntryKey> &settings, Value &properties, Value &required ) {
      for ( const EntryKey &setting : settings ) {
         add( properties, setting.key, settingValue( setting ) );
         if ( setting.required )
            required.PushBack( textValue( setting.key ), allocator() );
      }
   }

   Value objectValue( const std::string &description, Value properties, Value required ) {
      Value made( rapidjson::kObjectType );
      if ( !description.empty() )
         add( made, "description", textValue( description ) );
      add( made, "type", textValue( "object" ) );
      add( made, "required", std::move( required ) );
      add( made, "additionalProperties", Value( false ) );
      add( made, "properties", std::move( properties ) );
      return made;
   }

   Value settingValue( const EntryKey &setting ) {
      using Type = EntryKey::Type;
      if ( setting.type == Type::Object ) {
         Value properties( rapidjson::kObjectType );
         Value required( rapidjson::kArrayType );
         addKeys( setting.parts, properties, required );
         return objectValue( setting.description, std::move( properties ), std::move( required ) );
      }
      Value made( rapidjson::kObjectType );
      add( made, "description", textValue( setting.description ) );
      switch ( setting.type ) {
      case Type::Number:
      case Type::Integer:
         add( made, "type", textValue( setting.type == Type::Number ? "number" : "integer" ) );
         add( made, "minimum", numberValue( setting.least ) );
         add( made, "maximum", numberValue( setting.most ) );
         break;
      case Type::Text:
         add( made, "type", textValue( "string" ) );
         add( made, "maxLength", Value( setting.maxLength ) );
         break;
      case Type::Choice:
         add( made, "enum", textValues( setting.choices ) );
         break;
      case Type::List:
         add( made, "type", textValue( "array" ) );
         if ( setting.minItems > 0 )
            add( made, "minItems", Value( setting.minItems ) );
         if ( setting.maxItems > 0 )
            add( made, "maxItems", Value( setting.maxItems ) );
         add( made, "items", settingValue( setting.parts.front() ) );
         break;
      case Type::Object:
         break;
      }
      return made;
   }

   rapidjson::Document document_;
};

} // namespace

std::string simulationSchemaText() { return SchemaWriter().write(); }

} // namespace Simulator
