#pragma once

#include "host/HealthReport.h"
#include "host/State.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <string_view>

namespace Host {

// Writes one JSON text, member by member.
class JsonWriter {
 public:
   JsonWriter &beginObject() { return writer_.StartObject(), *this; }
   JsonWriter &endObject() { return writer_.EndObject(), *this; }
   JsonWriter &beginList() { return writer_.StartArray(), *this; }
   JsonWriter &endList() { return writer_.EndArray(), *this; }
   JsonWriter &key( std::string_view name ) {
      writer_.Key( name.data(), static_cast<rapidjson::SizeType>( name.size() ) );
      return *this;
   }

   // Bytes that are no UTF-8 are replaced.
   JsonWriter &value( std::string_view text );
   JsonWriter &value( const char *text ) { return value( std::string_view( text ) ); }
   JsonWriter &value( double number ) { return writer_.Double( number ), *this; }
   JsonWriter &value( int64_t number ) { return writer_.Int64( number ), *this; }
   JsonWriter &value( bool flag ) { return writer_.Bool( flag ), *this; }
   JsonWriter &value( std::monostate ) { return writer_.Null(), *this; }

   template <class T>
   JsonWriter &member( std::string_view name, const T &what ) {
      return key( name ).value( what );
   }
   // The members "status" and "fault"; either is left out when it is empty.
   JsonWriter &fault( const Fault &fault );
   // The members "name", "unit", "state" and "value" of a reading.
   JsonWriter &reading( const Reading &reading );

   // The members "bus", "path" and "address" of a chip.
   JsonWriter &place( const BoardFiles::ChipPlace &chip );

   // What is told of an object and its values: all; or without what changes by itself with each
   // reading (ages, extremes and the like), and without limits.
   enum class Detail { All, Lasting };
   // The members "name", "type", "state" and what is wrong with an object.
   JsonWriter &objectState( const ObjectReport &object, Detail detail = Detail::All );
   // The members of an object of a board.
   JsonWriter &members( const ObjectReport &object, Detail detail = Detail::All );
   // The member "time": now, from which all ages count.
   JsonWriter &time();
   // What is wrong with it.
   JsonWriter &cause( const Health::Cause &cause );
   // A JSON object or list that is already a text.
   JsonWriter &raw( std::string_view json ) {
      writer_.RawValue( json.data(), json.size(), rapidjson::kObjectType );
      return *this;
   }

   std::string text() const { return { buffer_.GetString(), buffer_.GetSize() }; }

 private:
   rapidjson::StringBuffer buffer_{};
   rapidjson::Writer<rapidjson::StringBuffer> writer_{ buffer_ };
};

// An object of a board, by the definition "object" of boards/state.schema.json.
std::string toJson( const ObjectReport &object );

// A whole board, by boards/state.schema.json.
std::string toJson( std::string_view board, const BoardReport &report );

// What is wrong with a board, by boards/health.schema.json.
std::string toJson( std::string_view board, const HealthReport &report );

} // namespace Host
