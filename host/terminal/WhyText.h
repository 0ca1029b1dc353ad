#pragma once

#include "host/serve/Why.h"

#include <string>
#include <vector>

namespace Host {

// All that is known of one object, for a person. With columns, longer lines are wrapped.
std::vector<std::string> linesOf( const Why &why, size_t columns );

} // namespace Host
