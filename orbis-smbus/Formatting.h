// Pieces of output: one JSON object on one line for scripts, and bytes in hexadecimal.
#pragma once

#include <fmt/format.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstdint>
#include <functional>
#include <string>

namespace SmbusClient {

using Json = rapidjson::Writer<rapidjson::StringBuffer>;

// " 19 80"
inline std::string hex( const std::string &bytes ) {
   std::string text;
   for ( const char byte : bytes )
      text += fmt::format( " {:02x}", static_cast<unsigned char>( byte ) );
   return text;
}

inline std::string jsonObject( const std::function<void( Json & )> &fill ) {
   rapidjson::StringBuffer buffer;
   Json json( buffer );
   json.StartObject();
   fill( json );
   json.EndObject();
   return std::string( buffer.GetString(), buffer.GetSize() ) + "\n";
}

inline void add( Json &json, const char *key, const std::string &text ) {
   json.Key( key );
   json.String( text.c_str(), static_cast<rapidjson::SizeType>( text.size() ) );
}

inline void add( Json &json, const char *key, double value ) {
   json.Key( key );
   json.Double( value );
}

inline void add( Json &json, const char *key, bool truth ) {
   json.Key( key );
   json.Bool( truth );
}

inline void add( Json &json, const char *key, uint64_t number ) {
   json.Key( key );
   json.Uint64( number );
}

inline void addBytes( Json &json, const char *key, const std::string &bytes ) {
   json.Key( key );
   json.StartArray();
   for ( const char byte : bytes )
      json.Uint( static_cast<unsigned char>( byte ) );
   json.EndArray();
}

} // namespace SmbusClient
