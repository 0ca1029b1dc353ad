#pragma once

#include "boardfiles/DeviceDocument.h"
#include "boardfiles/HealthKeys.h"
#include "boardfiles/Kind.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace BoardFiles {

// One object of a board, as objects.json describes it.
struct BoardObject {
   std::optional<Kind> kind{};
   std::string name{};
   std::optional<DeviceDocument> device{};
   std::optional<std::string> label{}; // of SMBus objects
   Place labelPlace{};
   std::optional<uint8_t> value{}; // beside a label
   Place valuePlace{};
   std::string reads{};               // of SMBus objects: what the host reads of them; or empty
   std::vector<std::string> module{}; // of cages: the labels of their modules' addresses
   std::vector<Place> modulePlaces{};
   std::optional<double> alert{}; // degrees Celsius, of temperature sensors
   std::optional<double> critical{};
   HealthKeys health{};
   Place place{};
};

// A board's objects, and the rules over them.
struct ObjectsFile {
   std::vector<BoardObject> objects{};
   std::vector<BoardRule> rules{};
};

// What the module in a cage is called among a board's objects.
std::string moduleNameOf( const std::string &cage );

// Reads the file and reports what its schema refuses and what is wrong with objects by themselves:
// names that are there twice, a label without a value, limits that contradict each other. And what
// is wrong between them: objects that are on each other, members of rules that don't exist. Nothing
// when it can't be read as JSON; what the schema refuses is left out of the result.
std::optional<ObjectsFile> readObjects( const std::filesystem::path &path, Findings &findings );

} // namespace BoardFiles
