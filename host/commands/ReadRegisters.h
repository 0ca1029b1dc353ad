#pragma once

#include "boardfiles/Board.h"
#include "host/commands/CommandLine.h"
#include "host/serve/Client.h"
#include "host/serve/Why.h"

#include <optional>
#include <vector>

namespace Host {

// Reads the registers of these chips, through the serve or, without one, with a session of its own.
void readRegisters( const BoardFiles::Board &board, const Options &options,
                    const std::optional<Client> &serve, std::vector<ChipReadings> &chips );

} // namespace Host
