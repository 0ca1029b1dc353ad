#pragma once

#include <string_view>

namespace Host {

// docs/openapi.json, as it was when this program was built.
extern const std::string_view openApiDocument;

} // namespace Host
