// The one reader of JSON files: values that know where they are in their file.
#pragma once

#include "boardfiles/Finding.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace BoardFiles {

// A text and its name, with the places in it.
class Source {
 public:
   Source( std::string name, std::string text );

   const std::string &text() const { return text_; }
   // The place of a byte offset; without a pointer.
   Place place( size_t offset ) const;

 private:
   std::string name_;
   std::string text_;
   std::vector<size_t> lineStarts_;
};

// A value of a JSON text.
class Json {
 public:
   enum class Type { Null, Bool, Number, Text, List, Object };
   struct Member;

   Type type() const { return type_; }
   // The value as its file has it.
   std::string_view source() const;
   // The whole text that the value is in.
   const std::string &fileText() const { return source_->text(); }
   Place place() const;
   const std::string &pointer() const { return pointer_; }

   // The member of an object; null when there is none, or this is not an object.
   const Json *find( std::string_view key ) const;
   // The elements of a list, the members of an object; none for anything else.
   std::span<const Json> elements() const { return elements_; }
   std::span<const Member> members() const;
   // The elements of the list that is the member; none when there is no such list.
   std::span<const Json> elementsOf( std::string_view key ) const;

   // The value as what the name says; nothing when it is of another type.
   std::optional<double> toNumber() const;
   std::optional<uint32_t> toUnsigned() const; // a whole number of 32 bits, written without a point
   std::optional<int64_t> toInteger() const;   // at most 2^53 either side, without a point
   std::optional<std::string_view> toText() const;
   bool isBool() const { return type_ == Type::Bool; }
   bool isTrue() const { return type_ == Type::Bool && truth_; }
   bool isInteger() const { return type_ == Type::Number && integer_; } // no point, no exponent

   // The text, number or flag under a key; nothing when there is none of that type.
   std::optional<std::string> textOf( std::string_view key ) const;
   std::optional<uint32_t> unsignedOf( std::string_view key ) const;
   std::optional<double> numberOf( std::string_view key ) const;

 private:
   friend class JsonBuilder;

   Type type_ = Type::Null;
   bool truth_ = false;
   bool integer_ = false;
   double number_ = 0;
   std::string text_{};
   std::vector<Json> elements_{};
   std::vector<Member> members_;
   std::string pointer_{};
   std::shared_ptr<const Source> source_{};
   size_t begin_ = 0; // in the source
   size_t end_ = 0;
};

struct Json::Member {
   std::string key{};
   Json value{};
   Place place{}; // of the key
};

// Reads a file. Nothing, and a finding, when it can't be read or isn't JSON.
std::optional<Json> readJson( const std::filesystem::path &path, Findings &findings );

// Reads a text. Besides errors of syntax it reports what syntax allows but readers take in
// different ways: a key that is twice in one object, a NUL byte. Nesting deeper than 64 levels is
// refused.
std::optional<Json> parseJson( std::string text, const std::string &name, Findings &findings );

// Reads the JSON text that a value of type Text holds; its places are in the file around it.
std::optional<Json> parseInside( const Json &text, Findings &findings );

} // namespace BoardFiles
