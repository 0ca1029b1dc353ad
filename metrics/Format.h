#pragma once

#include <string_view>

namespace Metrics {

enum class Format {
   Text,        // of Prometheus, version 0.0.4
   OpenMetrics, // version 1.0.0
};

// The header Content-Type.
std::string_view contentTypeOf( Format format );

// The format that a client likes best, by its header Accept. Text where it names neither.
Format preferredBy( std::string_view accept );

} // namespace Metrics
