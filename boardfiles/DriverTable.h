#pragma once

#include "boardfiles/Finding.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace BoardFiles {

// What one driver argument has to be.
struct ArgumentRule {
   std::string type; // "integer", "number", "text", "boolean" or "flag"
   bool required = false;
   std::optional<double> minimum{};
   std::optional<double> maximum{};
   std::vector<std::string> choices{}; // empty: any
   std::vector<std::string> holds{};   // what a text must hold, each
};
using ArgumentRules = std::map<std::string, ArgumentRule, std::less<>>;

// What a driver puts on the bus: a read of some bytes of a register, or a byte alone.
struct TransferRule {
   bool isSendByte = false;
   unsigned read = 0;              // bytes
   uint32_t registerNumber = 0;    // of a read, or
   std::string registerArgument{}; // the argument that holds it
   unsigned times = 1;
};
using Batch = std::vector<TransferRule>; // nothing else is on the bus between them

// What a driver puts on the bus for one reading of an object, or to select a mux's channel.
struct TransfersRule {
   std::vector<Batch> batches{};
   std::string by{}; // the argument that says which case holds in place of these; empty: none
   std::map<std::string, std::vector<Batch>, std::less<>> cases{};
   bool once = false; // in a refresh for all objects of a device together
};

// What a driver object reads by a timer, if the document that made it has an argument.
struct PollRule {
   std::string argument{};
   double seconds = 1; // between two polls
   TransfersRule transfers{};
};

// The arguments that a driver needs to make one kind of object.
struct KindRule {
   ArgumentRules args{};
   std::vector<ArgumentRules> numbered{}; // each by the beginnings of names
   std::string by{}; // the argument that says which case holds; empty: there are no cases
   std::map<std::string, ArgumentRules, std::less<>> cases{};
   std::string fullScale{}; // the argument that holds a fan's highest speed; or empty
   std::map<std::string, std::string, std::less<>> nested{}; // key of a part, and its kind
   TransfersRule transfers{};
   std::map<std::string, TransfersRule, std::less<>> reads{}; // by the objects' key of this name
};

// What a driver object can make that was made by a document with certain arguments.
struct Variant {
   std::string argument{}; // that the document has; empty: fits any document
   std::optional<std::string> is{};
   std::vector<std::string> kinds{};
};

struct DriverRule {
   bool isMultiDevice = false;
   ArgumentRules args{}; // taken whatever kind is made
   std::map<std::string, KindRule, std::less<>> makes{};
   std::vector<Variant> variants{}; // the first that fits counts
   std::optional<PollRule> poll{};
};

// A topology device that the system object asks for.
struct SystemDevice {
   std::string label{};
   std::string driver{}; // empty: any, or none
};

// What traces of a plug-in mean. Those that are empty mean nothing.
struct PluginTraces {
   std::vector<std::string> faults{}; // beginnings; the rest says why an operation failed
   std::string absentHolds{};         // of the fault that says that a slot is empty
   std::string absentEnds{};
   std::vector<std::string> absentFirst{}; // one of these, too; none: it may be any transfer
   std::string unmanaged{};                // beginning, of a slot with a module that isn't known
   std::string unreadable{}; // beginning, of a slot with a module that can't be made out
   std::string pollFailed{}; // beginning
   std::string pollDone{};   // beginning

   // All of these beginnings.
   std::vector<std::string> beginnings() const;
};

// The Unix socket of the server that a plug-in connects to. Empty where that isn't told.
struct PluginServer {
   std::string variable{}; // of the environment, which names the socket
   std::string socket{};   // where the variable doesn't
};

// The data file of a plug-in.
struct DriverTable {
   std::vector<std::string> hams{};
   PluginServer server{};
   PluginTraces traces{};
   std::vector<SystemDevice> system{};
   std::map<std::string, DriverRule, std::less<>> drivers{};
};

// Nothing, and findings, when the file isn't what its schema wants.
std::optional<DriverTable> readDriverTable( const std::filesystem::path &path, Findings &findings );

} // namespace BoardFiles
