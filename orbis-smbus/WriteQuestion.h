#pragma once

#include "orbis-smbus/CommandLine.h"

#include <string>
#include <vector>

namespace SmbusClient {

// The objects of a board that are on the target's chip. None when the board's files can't be read:
// there is nothing to ask then. `fault` says why.
std::vector<std::string> objectsOn( const Target &target, const std::string &board,
                                    std::string &fault );

// A write goes past the driver of an object, which then may be wrong about its chip. Asks on the
// terminal; throws Failed when the answer is not yes, or when there is no terminal.
void askBeforeWrite( const Options &options );

} // namespace SmbusClient
