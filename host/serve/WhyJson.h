// What is known of one object, as JSON by boards/why.schema.json.
#pragma once

#include "host/serve/Why.h"

#include <optional>
#include <string>

namespace Host {

std::string toJson( const Why &why );
// Nothing when the text is not such an output.
std::optional<Why> readWhy( const std::string &text );

} // namespace Host
