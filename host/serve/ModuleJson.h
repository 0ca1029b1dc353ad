// What is known of the modules in a board's cages, as JSON by boards/modules.schema.json.
#pragma once

#include "host/session/CageModule.h"

#include <optional>
#include <string>
#include <vector>

namespace Host {

std::string toJson( const CageModule &module );
std::string toJson( const std::string &board, const std::vector<CageModule> &modules );

// Read the memory from such outputs and decode it. Nothing when a text is no such output.
std::optional<CageModule> readModule( const std::string &text );
std::optional<std::vector<CageModule>> readModules( const std::string &text );

} // namespace Host
