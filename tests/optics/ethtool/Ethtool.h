// Debian's ethtool, which decodes a module's memory, too.
#pragma once

#include "tests/optics/Images.h"

namespace OpticsTest {

struct Line {
   std::string label, value;
};

bool isEthtoolThere();

// What it prints of a memory, one line for each field. Throws std::runtime_error if it fails.
std::vector<Line> ethtoolOn( const Bytes &file, Optics::Standard standard );

} // namespace OpticsTest
