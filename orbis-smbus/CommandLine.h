#pragma once

#include "orbis-smbus/Size.h"
#include "orbis-smbus/Target.h"

#include <CLI/App.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace SmbusClient {

// What the user asks for.
struct Options {
   std::string socket; // empty: the usual one
   bool json = false;
   unsigned retries = 0;
   Target target; // of a scan, the bus and the way there only
   std::optional<uint32_t> offset;
   std::optional<Size> size;
   std::vector<uint32_t> values; // to write
   uint32_t first = 0;           // to dump
   uint32_t last = 0xFF;
   std::string control;            // empty: beside the server's socket
   std::vector<std::string> words; // behind sim
   std::string recording;          // to be printed; empty: trace what passes
};

// Parsing fills the options, which outlive the app, and runs nothing.
void describe( CLI::App &, Options & );

} // namespace SmbusClient
