// What is known of one object of a board, for a person who asks why it is as it is.
#pragma once

#include "boardfiles/Board.h"
#include "health/Event.h"
#include "host/HealthReport.h"
#include "host/State.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Host {

// A transfer that the plug-in's server remembers.
struct PassedTransfer {
   BoardFiles::ChipPlace place{};
   double age = 0;          // seconds
   std::string operation{}; // for people
   std::string data{};      // its bytes, "1a 00"; or empty
   std::string error{};     // empty: success
};

// A chip of a segment of a bus, and what is made of it.
struct ChipNeighbour {
   BoardFiles::ChipPlace place{};
   std::vector<std::string> objects{};
   std::optional<bool> answers{}; // nothing: none of its objects is read
};

// One step from an object to what explains it.
struct WhyStep {
   std::string object{};
   Health::Level level = Health::Level::Ok;
   std::string words{};
};

struct RegisterReading {
   BoardFiles::ChipRegister what{};
   std::optional<int64_t> value{};
   std::string error{}; // where there is no value
};

// What the registers of one chip hold.
struct ChipReadings {
   BoardFiles::ChipPlace place{};
   std::string through{}; // the SMBus object that reads them
   std::string whyNone{}; // empty: they are read
   std::vector<RegisterReading> registers{};
};

struct Why {
   std::string board{};
   ObjectReport object{};
   std::vector<BoardFiles::ChipPlace> chips{};
   std::string driver{};
   std::optional<uint32_t> did{};
   std::vector<std::string> on{}; // the objects that it is on, up to the slot
   std::vector<WhyStep> chain{};  // itself first; the last one is what the first cause is about
   std::vector<Health::Cause> causes{}; // what explains it first
   std::vector<ChipNeighbour> neighbours{};
   std::vector<PassedTransfer> transfers{}; // the last of its chips, oldest first
   std::string whyNoTransfers{};            // empty: they are known
   std::vector<std::string> leftAlone{};    // segments that the server leaves alone, and its words
   std::vector<Health::Event> events{};     // the last about it, oldest first
   std::vector<ChipReadings> registers{};   // of each chip; none where nobody has read them
};

constexpr size_t mostEventsOfWhy = 10;
constexpr size_t mostTransfersOfWhy = 8; // of each chip

// Without transfers, events and registers. The report was described.
Why whyOf( const BoardFiles::Board &board, size_t object, const BoardReport &report,
           const HealthReport &health );

// Of all transfers of some busses the last ones of these chips.
std::vector<PassedTransfer> lastOf( const std::vector<BoardFiles::ChipPlace> &chips,
                                    const std::vector<PassedTransfer> &all );

// The busses of these chips, each once.
std::vector<std::string> bussesOf( const std::vector<BoardFiles::ChipPlace> &chips );

// The registers of each chip that may be read, and through which object; none of them is read yet.
std::vector<ChipReadings> registersOf( const BoardFiles::Board &board, size_t object );

} // namespace Host
