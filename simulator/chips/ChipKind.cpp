#include "simulator/chips/ChipKind.h"

namespace Simulator {

using Type = EntryKey::Type;

EntryKey number( std::string key, std::string description, double least, double most ) {
   return { .key = std::move( key ),
            .description = std::move( description ),
            .type = Type::Number,
            .least = least,
            .most = most };
}

EntryKey integer( std::string key, std::string description, double least, double most ) {
   EntryKey setting = number( std::move( key ), std::move( description ), least, most );
   setting.type = Type::Integer;
   return setting;
}

EntryKey text( std::string key, std::string description, unsigned maxLength ) {
   return { .key = std::move( key ),
            .description = std::move( description ),
            .type = Type::Text,
            .maxLength = maxLength };
}

EntryKey choice( std::string key, std::string description, std::vector<std::string> choices ) {
   return { .key = std::move( key ),
            .description = std::move( description ),
            .type = Type::Choice,
            .choices = std::move( choices ) };
}

EntryKey list( std::string key, std::string description, EntryKey element, unsigned minItems,
               unsigned maxItems ) {
   return { .key = std::move( key ),
            .description = std::move( description ),
            .type = Type::List,
            .minItems = minItems,
            .maxItems = maxItems,
            .parts = { std::move( element ) } };
}

EntryKey object( std::string key, std::string description, std::vector<EntryKey> keys ) {
   return { .key = std::move( key ),
            .description = std::move( description ),
            .type = Type::Object,
            .parts = std::move( keys ) };
}

std::vector<unsigned> ChipEntry::numbers( std::string_view key ) const {
   std::vector<unsigned> all;
   for ( const BoardFiles::Json &each : settings_.elementsOf( key ) )
      all.push_back( *each.toUnsigned() );
   return all;
}

} // namespace Simulator
