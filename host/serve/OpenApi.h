#pragma once

#include <span>
#include <string_view>
#include <utility>

namespace Host {

// orbis_embed() defines it.
extern const std::span<const std::pair<std::string_view, std::string_view>> embeddedDocuments;

// docs/openapi.json, as it was when this program was built.
inline std::string_view openApiDocument() { return embeddedDocuments.front().second; }

} // namespace Host
