#include "boardfiles/Json.h"

#include <algorithm>
#include <limits>

namespace BoardFiles {

Source::Source( std::string name, std::string text )
   : name_( std::move( name ) ), text_( std::move( text ) ), lineStarts_{ 0 } {
   for ( size_t at = text_.find( '\n' ); at != text_.npos; at = text_.find( '\n', at + 1 ) )
      lineStarts_.push_back( at + 1 );
}

Place Source::place( size_t offset ) const {
   const auto line = std::upper_bound( lineStarts_.begin(), lineStarts_.end(), offset ) - 1;
   return { name_,
            static_cast<unsigned>( line - lineStarts_.begin() + 1 ),
            static_cast<unsigned>( offset - *line + 1 ),
            {} };
}

std::string_view Json::source() const {
   return std::string_view( source_->text() ).substr( begin_, end_ - begin_ );
}

Place Json::place() const {
   Place place = source_->place( begin_ );
   place.pointer = pointer_;
   return place;
}

const Json *Json::find( std::string_view key ) const {
   const auto member = std::find_if( members_.begin(), members_.end(),
                                     [&]( const Member &each ) { return each.key == key; } );
   return member == members_.end() ? nullptr : &member->value;
}

std::span<const Json::Member> Json::members() const { return members_; }

std::span<const Json> Json::elementsOf( std::string_view key ) const {
   const Json *list = find( key );
   return list ? list->elements() : std::span<const Json>();
}

std::optional<double> Json::toNumber() const {
   return type_ == Type::Number ? std::optional( number_ ) : std::nullopt;
}

std::optional<uint32_t> Json::toUnsigned() const {
   if ( !isInteger() || number_ < 0 || number_ > std::numeric_limits<uint32_t>::max() )
      return {};
   return static_cast<uint32_t>( number_ );
}

std::optional<int64_t> Json::toInteger() const {
   constexpr double exact = 1ull << 53; // beyond, doubles leave numbers out
   if ( !isInteger() || number_ < -exact || number_ > exact )
      return {};
   return static_cast<int64_t>( number_ );
}

std::optional<std::string_view> Json::toText() const {
   return type_ == Type::Text ? std::optional<std::string_view>( text_ ) : std::nullopt;
}

std::optional<std::string> Json::textOf( std::string_view key ) const {
   const Json *member = find( key );
   return member && member->type_ == Type::Text ? std::optional( member->text_ ) : std::nullopt;
}

std::optional<uint32_t> Json::unsignedOf( std::string_view key ) const {
   const Json *member = find( key );
   return member ? member->toUnsigned() : std::nullopt;
}

std::optional<double> Json::numberOf( std::string_view key ) const {
   const Json *member = find( key );
   return member ? member->toNumber() : std::nullopt;
}

} // namespace BoardFiles
