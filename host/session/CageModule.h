#pragma once

#include "host/State.h"
#include "optics/Image.h"
#include "optics/Module.h"

#include <optional>
#include <string>
#include <vector>

namespace Host {

// What is known of the module in a cage.
struct CageModule {
   std::string cage{}; // "qsfp1"; empty: the memory is from elsewhere
   State state = State::Ok;
   Fault fault{};
   double age = 0;        // seconds since its monitors were read
   Optics::Image image{}; // without a byte where nothing was read
   std::optional<Optics::Module> module{};
};

// Decodes the image. Without a standard its first byte tells it; nothing is decoded where it
// doesn't.
void decode( CageModule &module, std::optional<Optics::Standard> standard = {} );

// The worst that the module tells: "rx_power_2 low alarm". Alarms are worse than warnings, and a
// value that is beyond a threshold counts as its flag. Empty: nothing.
std::string worstOf( const Optics::Module &module );

} // namespace Host
