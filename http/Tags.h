#pragma once

#include <string_view>

namespace Http {

// Whether a client says in If-None-Match that it has the answer with this ETag (RFC 9110, 13.1.2).
bool hasTag( std::string_view ifNoneMatch, std::string_view tag );

} // namespace Http
