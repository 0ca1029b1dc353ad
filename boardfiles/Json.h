#pragma once

#include "boardfiles/Finding.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <rapidjson/document.h>
#include <string>
#include <string_view>

namespace BoardFiles::Json {

// A file of a board: its text as it stands, and what it says.
struct File {
   Place root;
   std::string text;
   rapidjson::Document document;
};

// Reads and parses a file. Nothing, and a finding, when it can't be read or isn't JSON.
std::optional<File> load( const std::filesystem::path &path, Findings &findings );

// Parses a text that stands at a place of a file. Beside syntax it reports what the syntax allows
// and a reader would take differently from another: an object's key that is there twice, a NUL
// byte, nesting without end. Nothing when the text can't be used at all.
std::optional<rapidjson::Document> parse( const std::string &text, const Place &at,
                                          Findings &findings );

// The member of an object; null when there is none, or the value is no object.
const rapidjson::Value *find( const rapidjson::Value *value, const char *key );

// The value as what the name says; nothing when it is null or of another type.
std::optional<uint32_t> toUnsigned( const rapidjson::Value *value );
std::optional<std::string_view> toText( const rapidjson::Value *value );
bool isTrue( const rapidjson::Value *value );

// The text under a key; empty when there is none.
std::string textOf( const rapidjson::Value &object, const char *key );

// The elements of an array; none for anything else.
rapidjson::Value::ConstArray elements( const rapidjson::Value *value );
// The members of an object; none for anything else.
rapidjson::Value::ConstObject members( const rapidjson::Value *value );

// The value as compact JSON text.
std::string write( const rapidjson::Value &value );

} // namespace BoardFiles::Json
