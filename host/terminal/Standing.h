// How an object stands, as a sign, a word and a style.
#pragma once

#include "host/State.h"
#include "screen/Sections.h"

#include <array>
#include <string>
#include <string_view>

namespace Host {

// From the best to the worst.
enum class Standing { Ok, Other, Absent, Stale, Unreadable, Warning, Critical };

struct Sign {
   std::string_view mark; // beside each colour
   std::string_view word;
   Screen::Style style;
};
const Sign &signOf( Standing standing );

Standing standingOf( Health::Level level );
Standing standingOf( const ObjectReport &object );
Standing standingOf( const ObjectReport &object, size_t value );

// "5: 1 critical, 2 absent" of a section.
class StandingCount {
 public:
   void add( Standing standing ) { ++counts_.at( static_cast<size_t>( standing ) ); }
   Screen::Line line() const;

 private:
   std::array<size_t, 7> counts_{};
};

} // namespace Host
