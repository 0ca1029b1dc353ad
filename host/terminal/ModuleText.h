#pragma once

#include "host/session/CageModule.h"

#include <string>
#include <vector>

namespace Host {

// All that a module tells, for people. Lines have at most `columns` characters where that can be;
// 0: any number.
std::vector<std::string> linesOf( const CageModule &module, size_t columns );

// One line for each module, with a title. Empty cages are counted in the last line.
std::vector<std::string> tableOf( const std::vector<CageModule> &modules, size_t columns = 0 );

// The power that each lane receives in dBm: "-1.1 <=-40"; and the least of them. Empty when the
// module doesn't measure it.
std::string lightOf( const Optics::Module &module );
std::string leastLightOf( const Optics::Module &module );

// Its bytes, 16 on a line. Bytes that weren't read are "--".
std::vector<std::string> hexLinesOf( const Optics::Image &image );

} // namespace Host
