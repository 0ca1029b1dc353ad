#pragma once

#include <google/protobuf/stubs/logging.h>

namespace Fuzz {

// Nothing is told of messages that are not valid, which most inputs are.
inline void quiet() {
   [[maybe_unused]] static const auto before = google::protobuf::SetLogHandler( nullptr );
}

} // namespace Fuzz
