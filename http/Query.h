#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace Http {

// The part of an URL behind its question mark, "since=2h&object=fan%201": the values by their
// names, decoded. Nothing where a % has no two hexadecimal digits behind it.
std::optional<std::map<std::string, std::string>> parseQuery( std::string_view query );

// The number that a text is, all of it: "0", "17".
std::optional<uint64_t> wholeNumber( std::string_view text );

// The part before it, "/v1/objects/fan%201": decoded. Nothing as above.
std::optional<std::string> parsePath( std::string_view path );

// A text as it must be written in an URL.
std::string urlEncoded( std::string_view text );

} // namespace Http
